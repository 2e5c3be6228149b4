#include "companions/decoderinterop/FrameTimes.h"
#include "companions/decoderinterop/RecordingReader.h"
#include "engine/platform/DecoderInterop.h"

#include <new>
#include <utility>

struct DecoderInterop::State
{
    explicit State(const std::wstring& metaPath) : times(metaPath) {}

    CFrameTimes times;
    CRecordingReader reader;
};

DecoderInterop::DecoderInterop(std::unique_ptr<State> pState) : m_pState(pState.release()) {}

DecoderInterop::~DecoderInterop()
{
    delete m_pState;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the exported interface takes the paths by value
DecoderInterop* DecoderInterop::CreateDecoder(std::wstring mediaPath, std::wstring metaPath)
{
    try
    {
        auto pState = std::make_unique<State>(metaPath);
        if (FAILED(pState->reader.Open(mediaPath)))
            return nullptr;
        return new DecoderInterop(std::move(pState));
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

ISampleBuffer* DecoderInterop::GetSample(std::uint64_t frameIndex)
{
    try
    {
        const std::optional<std::uint64_t> time =
            m_pState->times.HasRecords() ? m_pState->times.TimeOf(frameIndex) : m_pState->reader.TimeOf(frameIndex);
        return time ? m_pState->reader.GetPicture(*time).Detach() : nullptr;
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}
