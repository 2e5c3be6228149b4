// Two films, cut together with a transition and a title, as raw pictures and a WAV file.
#include <qmx/qmx.h>

#include <mfapi.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{
constexpr std::uint32_t kWidth = 640;
constexpr std::uint32_t kHeight = 360;
constexpr std::uint32_t kFrameRate = 25;
constexpr std::uint32_t kSoundRate = 48'000; // what clips deliver, as 16 bits in two channels

// | first ... 3.5 | transition 3.5 ... 4.5 | second 4.5 ... 8 |
constexpr std::uint64_t kCut = 4 * kTimePerSecond; // where the two films meet
constexpr std::uint64_t kHalf = kTimePerSecond / 2;
constexpr std::uint64_t kEnd = 8 * kTimePerSecond;

/// @return @p pObject, unless the engine could not make it
template <class T> std::unique_ptr<T> Made(T* pObject)
{
    if (pObject == nullptr)
        throw std::runtime_error("memory is short");
    return std::unique_ptr<T>(pObject);
}

template <class T> std::unique_ptr<T> MakeClip(QMXClipType type, std::uint64_t start, std::uint64_t end)
{
    auto pClip = Made(static_cast<T*>(CreateClipByClipType(type)));
    pClip->SetStartTime(start);
    pClip->SetDuration(end - start);
    return pClip;
}

/// The film @p file from its beginning.
std::unique_ptr<CQMXVideoClip> MakeScene(const char* file, std::uint64_t start, std::uint64_t end)
{
    const std::wstring path = std::filesystem::path(file).wstring();
    // A clip whose file cannot be read is shown as black and heard as silence, so we look first.
    const auto pDecoder = RefPtr<CVideoDecoder>::Adopt(new CVideoDecoder);
    tagVideoInfo info;
    if (!pDecoder->GetVideoInfo(path, &info))
        throw std::runtime_error(std::string(file) + ": no video that can be read");
    if (info.dDuration * kTimePerSecond < static_cast<double>(end - start))
        throw std::runtime_error(std::string(file) + ": too short");
    auto pClip = MakeClip<CQMXVideoClip>(QMXClipType_Video, start, end);
    pClip->SetFilePath(path);
    pClip->SetFrameRate(kFrameRate); // one picture of the clip for every picture of ours
    return pClip;
}

/// The part of @p scene that lies between @p start and @p end of the timeline.
std::unique_ptr<IQMXBaseClip> PartOf(IQMXBaseClip& scene, std::uint64_t start, std::uint64_t end)
{
    auto pPart = Made(DuplicateClip(&scene));
    pPart->SetInPoint(scene.GetInPoint() + (start - scene.GetStartTime()));
    pPart->SetStartTime(start);
    pPart->SetDuration(end - start);
    return pPart;
}

std::unique_ptr<IQMXBaseClip> MakeTitle(const std::wstring& words, std::uint64_t start, std::uint64_t end)
{
    auto pText = std::make_unique<tagQMXTitleTextInfo>();
    pText->text = words;
    pText->textLength = static_cast<std::uint32_t>(words.size()); // all of it is shown
    pText->fontSize = 32;                                         // on a picture of 288 rows
    pText->fontWeight = 700;
    pText->x = 0.05; // fractions of the picture
    pText->y = 0.8;
    auto pClip = MakeClip<CQMXTitleClip>(QMXClipType_Title, start, end);
    pClip->AddTitleText(pText.release()); // the clip owns it now
    return pClip;
}

IQMXTrack& AddTrack(IQMXDocument& document, std::uint64_t id)
{
    auto pTrack = Made(CreateQMXTrack(id, QMXTrackType{}, document.GetDocumentID(), {0, 0, 1, 1}));
    if (!document.AddTrack(pTrack.get()))
        throw std::runtime_error("memory is short");
    return *pTrack.release(); // the document owns it now
}

void AddClip(IQMXTrack& track, std::unique_ptr<IQMXBaseClip> pClip)
{
    pClip->SetTrackID(track.GetTrackID());
    if (!track.AddClip(pClip.get()))
        throw std::runtime_error("memory is short");
    pClip.release(); // the track owns it now
}

/// Puts the films and the title on two tracks.
void Edit(IQMXDocument& document, IQMXBaseClip& first, IQMXBaseClip& second)
{
    IQMXTrack& scenes = AddTrack(document, 1);
    AddClip(scenes, PartOf(first, 0, kCut - kHalf));
    auto pTransition = MakeClip<CQMXTXClip>(QMXClipType_Transition, kCut - kHalf, kCut + kHalf);
    pTransition->SetEffectModule(L"qmx_transitions.so"); // of our own folder; on Windows it ends in .dll
    pTransition->SetEffectType(13);                      // a clock's hand; docs/effects.md has them all
    pTransition->SetClips(Made(DuplicateClip(&first)).release(), Made(DuplicateClip(&second)).release());
    AddClip(scenes, std::move(pTransition));
    AddClip(scenes, PartOf(second, kCut + kHalf, kEnd));

    AddClip(AddTrack(document, 2), MakeTitle(L"Two films", 0, 3 * kTimePerSecond));
}

/// Draws @p frame in the middle of @p canvas, B, G, R, A bytes, whose pixels are opaque.
void Draw(ISampleBuffer& frame, std::vector<std::uint8_t>& canvas)
{
    std::uint8_t* pPixels = nullptr;
    const std::uint32_t width = std::min(frame.GetWidth(), kWidth);
    const std::uint32_t height = std::min(frame.GetHeight(), kHeight);
    if (!frame.GetBuffer(&pPixels, nullptr))
        return;
    const bool isOpaque = !frame.GetAlphaFlag();
    const bool isPremultiplied = frame.GetFlag() == 1;
    for (std::uint32_t y = 0; y < height; ++y)
    {
        const std::uint8_t* pFrom = pPixels + std::size_t{y} * frame.GetStride();
        std::uint8_t* pTo = &canvas[((kHeight - height) / 2 + y) * (kWidth * 4) + (kWidth - width) / 2 * 4];
        for (std::uint32_t x = 0; x < width; ++x, pFrom += 4, pTo += 4)
        {
            const unsigned alpha = isOpaque ? 255 : pFrom[3];
            const unsigned weight = isPremultiplied ? 255 : alpha;
            for (int c = 0; c < 3; ++c)
                pTo[c] = static_cast<std::uint8_t>((pFrom[c] * weight + pTo[c] * (255 - alpha) + 127) / 255);
        }
    }
}

/// Writes every picture of the timeline, one behind the other.
void WritePictures(IQMXDocument& document, std::ostream& out)
{
    std::vector<std::uint8_t> canvas(kWidth * kHeight * 4);
    for (std::uint64_t frame = 0; frame * kTimePerSecond / kFrameRate < kEnd; ++frame)
    {
        const std::uint64_t time = frame * kTimePerSecond / kFrameRate;
        for (std::size_t i = 0; i < canvas.size(); i += 4)
            std::memcpy(&canvas[i], "\0\0\0\xFF", 4);
        for (int i = 0; i < document.GetTrackCount(); ++i) // the lowest track first
        {
            IQMXTrack& track = *document.GetTrack(i);
            if (track.GetClipAtTime(time, false) == nullptr)
                continue;
            tagRenderProp request;
            request.flags = kRequestUseCache;
            request.width = kWidth;
            request.height = kHeight;
            const auto pFrame = SampleBufferPtr::Adopt(track.GetFrameAtTime(request, time, nullptr));
            if (!pFrame)
                throw std::runtime_error("track " + std::to_string(track.GetTrackID()) + " has no picture " +
                                         std::to_string(frame));
            Draw(*pFrame.Get(), canvas);
        }
        if (!out.write(reinterpret_cast<const char*>(canvas.data()), static_cast<std::streamsize>(canvas.size())))
            throw std::runtime_error("the pictures cannot be written");
    }
}

/// Adds what is heard of @p clip to @p sound, samples of left and right in turn.
void AddSound(IQMXBaseClip& clip, std::vector<std::int16_t>& sound)
{
    const auto sampleAt = [](std::uint64_t time) { return time * kSoundRate / kTimePerSecond * 2; };
    std::vector<std::int16_t> heard(sampleAt(clip.GetEndTime()) - sampleAt(clip.GetStartTime()));
    tagRenderProp request;
    request.audioParams = {kSoundRate, clip.GetStartTime()};
    clip.OpenAudio(request);
    auto* const pBytes = reinterpret_cast<std::uint8_t*>(heard.data());
    const auto cbAll = static_cast<std::uint32_t>(heard.size() * sizeof heard[0]);
    for (std::uint32_t cbDone = 0, cbRead = 1; cbDone < cbAll && cbRead > 0; cbDone += cbRead)
    {
        std::uint8_t* pBlock = pBytes + cbDone; // a block of ours: the clip fills it
        std::uint32_t cb = cbAll - cbDone;
        cbRead = clip.ReadAudio(&pBlock, &cb); // fewer bytes at the end of the file; behind it there is silence
    }
    clip.ResetAudio();
    auto sum = sound.begin() + static_cast<std::ptrdiff_t>(sampleAt(clip.GetStartTime()));
    for (const std::int16_t value : heard)
    {
        *sum = static_cast<std::int16_t>(std::clamp(*sum + value, -32'768, 32'767));
        ++sum;
    }
}

/// Writes @p sound as a WAV file, whose numbers are little-endian, as those of our machines are.
void WriteWave(const std::vector<std::int16_t>& sound, std::ostream& out)
{
    const auto number = [&out](std::uint32_t value, std::streamsize bytes)
    { out.write(reinterpret_cast<const char*>(&value), bytes); };
    const auto cb = static_cast<std::uint32_t>(sound.size() * sizeof sound[0]);
    out << "RIFF";
    number(36 + cb, 4);
    out << "WAVEfmt ";
    number(16, 4);
    number(1, 2); // whole numbers
    number(2, 2); // channels
    number(kSoundRate, 4);
    number(kSoundRate * 4, 4); // bytes in a second
    number(4, 2);              // bytes of a sample of both channels
    number(16, 2);             // bits of a number
    out << "data";
    number(cb, 4);
    out.write(reinterpret_cast<const char*>(sound.data()), cb);
    if (!out.flush())
        throw std::runtime_error("the sound cannot be written");
}

void MakeFilm(char** files)
{
    const auto pFirst = MakeScene(files[0], 0, kCut);
    const auto pSecond = MakeScene(files[1], kCut, kEnd);
    const auto pCleaner = Made(CreateQMXCleaner()); // deletes the tracks; outlives the document
    const auto pDocument = Made(CreateQMXDocument(pCleaner.get()));
    Edit(*pDocument, *pFirst, *pSecond);

    std::ofstream pictures(files[2], std::ios::binary);
    WritePictures(*pDocument, pictures);

    std::vector<std::int16_t> sound(kEnd / kTimePerSecond * kSoundRate * 2);
    AddSound(*pFirst, sound);
    AddSound(*pSecond, sound);
    std::ofstream wave(files[3], std::ios::binary);
    WriteWave(sound, wave);
}
} // namespace

int main(int argc, char** argv)
{
    if (argc != 5)
    {
        std::fprintf(stderr, "usage: film FIRST SECOND PICTURES SOUND\n");
        return 2;
    }
    int status = 1;
    if (FAILED(MFStartup(MF_VERSION, MFSTARTUP_FULL)))
        return status;
    try
    {
        MakeFilm(argv + 1);
        status = 0;
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "film: %s\n", error.what());
    }
    RemoveAllDecoders(); // those that the cache still holds
    MFShutdown();
    return status;
}
