// Camera recordings, from the video that is packed to the frame that is shown.
#include "engine/decoders/media/CameraClipDecoder.h"
#include "engine/platform/PixelUtility.h"
#include "tests/companions/TestSeed.h"
#include "tests/host/Program.h"
#include "tests/support/ClipFixture.h"
#include "tests/support/FrameStripReader.h"
#include "tests/support/MediaFolder.h"
#include "tests/support/MetaFile.h"
#include "tests/support/Picture.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <sstream>

namespace qmx::host
{
namespace
{
namespace fs = std::filesystem;
using test_support::MetaRecord;
using test_support::Picture;
using test_support::ReadFrameStrip;

std::vector<MetaRecord> ReadMeta(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::vector<MetaRecord> records;
    for (MetaRecord record; file.peek() != std::ifstream::traits_type::eof();)
    {
        for (std::uint64_t* const pField : {&record.time, &record.offset, &record.length})
        {
            *pField = 0;
            for (int shift = 0; shift < 64; shift += 8)
                *pField |= std::uint64_t{static_cast<std::uint8_t>(file.get())} << shift;
        }
        EXPECT_TRUE(file) << "a record that is not whole";
        records.push_back(record);
    }
    return records;
}

class Camera : public testing::Test
{
protected:
    std::string Name(const std::string& file) const { return (m_folder.Path() / file).string(); }
    void Pack(const fs::path& film, const std::string& name, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments{"pack-camera", film.string(), Name(name)};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const QmxRun run(arguments);
        ASSERT_EQ(run.ExitCode(), 0) << run.Errors();
    }
    void WriteProject(std::uint32_t width, std::uint32_t height, const std::string& clips) const
    {
        std::ofstream(m_folder.Path() / "p.json")
            << R"({"width": )" << width << R"(, "height": )" << height
            << R"(, "frameRate": 30, "tracks": [{"id": 1, "clips": [)" << clips << "]}]}";
    }
    std::optional<Picture> FrameAt(const std::string& at) const
    {
        const QmxRun run({"frame", Name("p.json"), "--at", at, "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return test_support::ReadPng(Name("f.png"));
    }
    std::vector<std::string> Hashes(const std::string& from) const
    {
        const QmxRun run({"hash", Name("p.json"), "--from", from});
        EXPECT_EQ(run.ExitCode(), 0) << run.Errors();
        return Lines(run.Output());
    }

    test_support::TemporaryFolder m_folder;
};

/// A film whose pictures are numbered from 0, and what becomes of it.
struct Packed
{
    const char* film;
    const char* codec;
    std::uint32_t count;
    std::uint32_t width, height; ///< of the recording's pictures
    double rate;
};

void PrintTo(const Packed& packed, std::ostream* pStream)
{
    *pStream << packed.film << " as " << packed.codec;
}

class PackedRecording : public Camera, public testing::WithParamInterface<Packed>
{
protected:
    bool Open()
    {
        tagDecProp prop(test_support::EnginePath(Name(std::string("cam.") + GetParam().codec)), 0);
        prop.decoderType = kDecoderCamera;
        prop.width = GetParam().width;
        prop.height = GetParam().height;
        m_pDecoder = RefPtr<CCameraClipDecoder>::Adopt(new CCameraClipDecoder);
        return m_pDecoder->Initialize(prop);
    }
    /// A Motion-JPEG decoder repeats the picture before for every second request.
    Picture FrameOf(std::uint64_t n)
    {
        bool flag = false;
        SampleBufferPtr::Adopt(m_pDecoder->GetClipVideoFrame(n, flag));
        return test_support::PictureOf(SampleBufferPtr::Adopt(m_pDecoder->GetClipVideoFrame(n, flag)).Get());
    }

    test_support::MediaServices m_services;
    RefPtr<CCameraClipDecoder> m_pDecoder;
};

TEST_P(PackedRecording, ShowsEveryFrameByItsNumber)
{
    QMX_REQUIRE_MEDIA(film, GetParam().film);
    ASSERT_NO_FATAL_FAILURE(Pack(film, std::string("cam.") + GetParam().codec));
    ASSERT_TRUE(Open());
    const std::uint32_t count = GetParam().count;
    for (std::uint32_t n = 0; n < count; ++n)
    {
        const Picture picture = FrameOf(n);
        ASSERT_EQ(ReadFrameStrip(picture), n) << "in order";
        ASSERT_EQ(picture.width, GetParam().width);
        ASSERT_EQ(picture.height, GetParam().height);
    }
    EXPECT_EQ(ReadFrameStrip(FrameOf(count)), count - 1) << "behind the end";
    for (std::uint32_t n = count; n-- > 0;)
        ASSERT_EQ(ReadFrameStrip(FrameOf(n)), n) << "in reverse";
    TestRandom random;
    for (int i = 0; i < 60; ++i)
    {
        const std::uint32_t n = random.Between(0, count - 1);
        ASSERT_EQ(ReadFrameStrip(FrameOf(n)), n) << "at random";
    }
}

TEST_P(PackedRecording, HasARecordForEveryFrame)
{
    QMX_REQUIRE_MEDIA(film, GetParam().film);
    ASSERT_NO_FATAL_FAILURE(Pack(film, std::string("cam.") + GetParam().codec));
    const bool isJpeg = std::string(GetParam().codec) == "mjpg";
    const fs::path media = Name(isJpeg ? "cam.mov" : "cam.mp4");
    const std::vector<MetaRecord> records = ReadMeta(Name("cam.meta"));
    ASSERT_EQ(records.size(), GetParam().count);
    EXPECT_EQ(m_folder.FileCount(), 2U) << "nothing but the media file and the index";
    std::ifstream file(media, std::ios::binary);
    std::uint64_t end = 0;
    for (std::size_t n = 0; n < records.size(); ++n)
    {
        ASSERT_EQ(records[n].time, static_cast<std::uint64_t>(static_cast<double>(n) * 1e7 / GetParam().rate + 1e-6));
        ASSERT_LE(records[n].offset + records[n].length, fs::file_size(media));
        if (isJpeg)
        {
            ASSERT_EQ(records[n].offset, end);
            file.seekg(static_cast<std::streamoff>(records[n].offset));
            ASSERT_EQ(file.get(), 0xFF);
            ASSERT_EQ(file.get(), 0xD8);
            end += records[n].length;
        }
    }
    if (isJpeg)
    {
        EXPECT_EQ(end, fs::file_size(media));
    }
}

INSTANTIATE_TEST_SUITE_P(Films, PackedRecording,
                         testing::Values(Packed{"h264-bframes-30.mp4", "mjpg", 300, 192, 108, 30},
                                         Packed{"h264-bframes-30.mp4", "h264", 300, 192, 108, 30},
                                         Packed{"h264-bframes-23976.mp4", "h264", 260, 192, 108, 24000 / 1001.0},
                                         Packed{"rotated-90-30.mp4", "mjpg", 60, 128, 208, 30},
                                         Packed{"rotated-90-30.mp4", "h264", 60, 128, 208, 30},
                                         Packed{"mpeg4-odd-30.mp4", "mjpg", 130, 193, 109, 30},
                                         Packed{"mpeg4-odd-30.mp4", "h264", 130, 194, 110, 30}),
                         [](const auto& instance)
                         {
                             std::string name = std::string(instance.param.film) + "_" + instance.param.codec;
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
                             return name;
                         });

TEST_F(Camera, AProjectShowsTheRightFrame)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    for (const std::string name : {"m.mjpg", "h.h264"})
    {
        ASSERT_NO_FATAL_FAILURE(Pack(film, name));
        WriteProject(384, 216,
                     R"({"type": "camera", "path": ")" + name + R"(", "start": 1, "duration": 11, "inPoint": 2})");
        for (const auto& [at, number] : {std::pair{"1", 60U}, {"1.1", 63U}, {"8.9667", 299U}, {"11.5", 299U}})
        {
            const std::optional<Picture> picture = FrameAt(at);
            ASSERT_TRUE(picture);
            EXPECT_EQ(ReadFrameStrip(*picture), number) << name << " at " << at;
        }
    }
}

TEST_F(Camera, AFrameLooksTheSameAskedAloneOrInItsTurn)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    ASSERT_NO_FATAL_FAILURE(Pack(film, "m.mjpg"));
    WriteProject(384, 216, R"({"type": "camera", "path": "m.mjpg", "start": 0, "duration": 3})");
    const std::vector<std::string> all = Hashes("0");
    ASSERT_EQ(all.size(), 90U);
    EXPECT_EQ(std::set<std::string>(all.begin(), all.end()).size(), 90U) << "no frame is shown twice";
    for (const auto& [from, first] : {std::pair{"1", 30U}, {"2.0333333", 61U}})
        EXPECT_EQ(Hashes(from), std::vector<std::string>(all.begin() + first, all.end()));
}

TEST_F(Camera, AClipIsTurned)
{
    QMX_REQUIRE_MEDIA(film, "h264-bframes-30.mp4");
    for (const std::string name : {"m.mjpg", "h.h264"})
    {
        ASSERT_NO_FATAL_FAILURE(Pack(film, name));
        WriteProject(108, 192,
                     R"({"type": "camera", "path": ")" + name + R"(", "start": 0, "duration": 2, "rotation": 90})");
        std::optional<Picture> picture = FrameAt("1");
        ASSERT_TRUE(picture);
        Picture upright{192, 108, std::vector<std::uint8_t>(192 * 108 * 4)};
        tagSampleInfo from;
        from.pData = picture->bgra.data();
        from.nWidth = 108;
        from.nHeight = 192;
        from.nStride = 108 * 4;
        tagSampleInfo to;
        to.pData = upright.bgra.data();
        to.nWidth = 192;
        to.nHeight = 108;
        to.nStride = 192 * 4;
        ASSERT_TRUE(RotateBGRA(&from, &to, 270));
        EXPECT_EQ(ReadFrameStrip(upright), 30U) << name;
    }
}

TEST_F(Camera, QualityDecidesAboutTheSize)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    ASSERT_NO_FATAL_FAILURE(Pack(film, "low.mjpg", {"--quality", "20"}));
    ASSERT_NO_FATAL_FAILURE(Pack(film, "high.mjpg", {"--quality", "95"}));
    EXPECT_LT(fs::file_size(Name("low.mov")) * 2, fs::file_size(Name("high.mov")));
    ASSERT_NO_FATAL_FAILURE(Pack(film, "low.h264", {"--crf", "40"}));
    ASSERT_NO_FATAL_FAILURE(Pack(film, "high.h264", {"--crf", "5"}));
    EXPECT_LT(fs::file_size(Name("low.mp4")), fs::file_size(Name("high.mp4")));
}

TEST_F(Camera, PackingTellsItsProgress)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    const QmxRun run({"pack-camera", film.string(), Name("m.mjpg"), "--progress", "json"});
    ASSERT_EQ(run.ExitCode(), 0);
    std::istringstream text(run.Output());
    nlohmann::json last;
    for (std::string line; std::getline(text, line);)
        last = nlohmann::json::parse(line);
    EXPECT_EQ(last.at("frame"), 60);
    EXPECT_EQ(last.at("frames"), 60);
}

TEST_F(Camera, FailuresSayWhyAndLeaveNothingBehind)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    std::ofstream(Name("text.mp4")) << "no film\n";
    fs::copy_file(film, Name("own.mp4"));
    struct Case
    {
        std::string in, out;
        int code;
        const char* pReason;
    };
    for (const Case& c : {Case{film.string(), Name("cam.mov"), 2, "must end in .mjpg or .h264"},
                          Case{film.string(), Name("cam.MJPG"), 2, "must end in .mjpg or .h264"},
                          Case{Name("absent.mp4"), Name("cam.mjpg"), 4, "cannot be opened"},
                          Case{Name("text.mp4"), Name("cam.h264"), 4, "no video"},
                          Case{m_folder.Path().string(), Name("cam.mjpg"), 4, "is a folder"},
                          Case{film.string(), Name("absent/cam.mjpg"), 5, "cannot be written"},
                          Case{film.string(), Name("absent/cam.h264"), 5, "cannot be written"},
                          Case{Name("own.mp4"), Name("own.h264"), 5, "is the video that is to be packed"}})
    {
        const QmxRun run({"pack-camera", c.in, c.out});
        EXPECT_EQ(run.ExitCode(), c.code) << c.out;
        EXPECT_NE(run.Errors().find(c.pReason), std::string::npos) << run.Errors();
    }
    EXPECT_EQ(m_folder.FileCount(), 2U);
}

TEST_F(Camera, AProjectSaysWhatARecordingLacks)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    ASSERT_NO_FATAL_FAILURE(Pack(film, "m.mjpg"));
    const auto reasonFor = [this](const std::string& name)
    {
        WriteProject(192, 108, R"({"type": "camera", "path": ")" + name + R"(", "start": 0, "duration": 1})");
        const QmxRun run({"frame", Name("p.json"), "--at", "0", "-o", Name("f.png")});
        EXPECT_EQ(run.ExitCode(), 4);
        return run.Errors();
    };
    EXPECT_NE(reasonFor("m.mov").find("the name must end in .mjpg or .h264"), std::string::npos);
    EXPECT_NE(reasonFor("n.mjpg").find("its index n.meta cannot be opened"), std::string::npos);
    EXPECT_NE(reasonFor("m.h264").find("its media file m.mp4 does not exist"), std::string::npos);
    fs::resize_file(Name("m.mov"), 100);
    EXPECT_NE(reasonFor("m.mjpg").find("its first frame cannot be read"), std::string::npos);
    fs::resize_file(Name("m.meta"), 23);
    EXPECT_NE(reasonFor("m.mjpg").find("its index holds no frames"), std::string::npos);
}

TEST_F(Camera, ARenderingDoesNotReplaceARecordingItShows)
{
    QMX_REQUIRE_MEDIA(film, "h264-no-b-30.mp4");
    ASSERT_NO_FATAL_FAILURE(Pack(film, "h.h264"));
    WriteProject(192, 108, R"({"type": "camera", "path": "h.h264", "start": 0, "duration": 1})");
    const QmxRun run({"render", Name("p.json"), "-o", Name("h.mp4")});
    EXPECT_EQ(run.ExitCode(), 5);
    EXPECT_NE(run.Errors().find("is a file that the project is made of"), std::string::npos);
}
} // namespace
} // namespace qmx::host
