// Files that are damaged, that are not media, or that would make a reader open something else.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class HostileMediaTest : public MadeMedia {
 protected:
  [[nodiscard]] std::optional<MediaErrorCode> errorOf(const std::string& name) const {
    const auto description = describeMedia(Url::fromFilePath(path(name)));
    if (description) return std::nullopt;
    EXPECT_EQ(description.error().place, path(name));
    return description.error().code;
  }
};

/// Catches what the process writes to standard error, at the level of the system.
class CaughtErrors {
 public:
  CaughtErrors() : saved_(dup(STDERR_FILENO)), file_(std::tmpfile()) {
    if (file_ == nullptr) throw std::runtime_error("no temporary file");
    dup2(fileno(file_), STDERR_FILENO);
  }
  ~CaughtErrors() {
    dup2(saved_, STDERR_FILENO);
    close(saved_);
    std::fclose(file_);
  }
  CaughtErrors(const CaughtErrors&) = delete;
  CaughtErrors& operator=(const CaughtErrors&) = delete;

  [[nodiscard]] long size() const { return lseek(fileno(file_), 0, SEEK_END); }

 private:
  int saved_;
  FILE* file_;
};

TEST_F(HostileMediaTest, SaysWhatIsWrongWithAnItemThatIsNotMedia) {
  using enum MediaErrorCode;
  directory().write("empty.mov", "");
  directory().write("zeros.mov", std::string(20'000, '\0'));
  directory().write("text.mov", "This is not a movie.\n");
  directory().write("text.mp3", "This is not music either.\n");
  directory().write("text.txt", std::string(3000, 'a') + '\n');
  directory().write("sub.srt", "1\n00:00:01,000 --> 00:00:02,000\nHello\n\n");
  ASSERT_EQ(mkfifo(path("pipe.mov").c_str(), 0600), 0);
  std::filesystem::create_directory(path("folder"));
  std::filesystem::create_symlink("pipe.mov", path("link.mov"));
  std::filesystem::create_symlink("nowhere", path("dangling.mov"));
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(errorOf("none.mov"), notOpened);
  EXPECT_EQ(errorOf("dangling.mov"), notOpened);
  EXPECT_EQ(errorOf(std::string("nul\0.mov", 8)), notOpened);
  EXPECT_EQ(errorOf("empty.mov"), empty);
  EXPECT_EQ(errorOf("pipe.mov"), notRegularFile);
  EXPECT_EQ(errorOf("link.mov"), notRegularFile);
  EXPECT_EQ(errorOf("folder"), noImageSequence);
  for (const char* const name : {"zeros.mov", "text.mov", "text.mp3", "text.txt", "sub.srt"}) {
    EXPECT_EQ(errorOf(name), unknownFormat) << name;
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));

  const auto device = describeMedia(Url::fromFilePath("/dev/zero"));
  ASSERT_FALSE(device);
  EXPECT_EQ(device.error().message(),
            "\"/dev/zero\": is not a regular file: a device; name a media file, or a folder of numbered images");
  const auto remote = describeMedia(Url::fromText("https://host/a.mov").value());
  ASSERT_FALSE(remote);
  EXPECT_EQ(remote.error().code, notAFileUrl);
  if (geteuid() != 0) {
    chmod(path("text.mov").c_str(), 0);
    EXPECT_EQ(errorOf("text.mov"), notOpened);
  }
}

TEST_F(HostileMediaTest, ReportsDamageWithoutAWordOnTheTerminal) {
  ASSERT_NO_FATAL_FAILURE(make({{"late.mov", "-map 0:v -map 1:a -c:v mjpeg -c:a pcm_s16le"},
                                {"early.mov", "-map 0:v -map 1:a -c:v mjpeg -c:a pcm_s16le -movflags faststart"},
                                {"clip.mxf", "-map 0:v -r 25 -c:v mpeg2video"},
                                {"clip.mkv", "-map 0:v -c:v mjpeg"},
                                {"clip.mp4", "-map 0:v -c:v libx264 -pix_fmt yuv420p"},
                                {"clip.avi", "-map 0:v -c:v mjpeg"}}));
  const CaughtErrors caught;
  const std::string late = content("late.mov");
  directory().write("half.mov", std::string_view(late).substr(0, late.size() / 2));
  const auto half = describeMedia(Url::fromFilePath(path("half.mov")));
  ASSERT_FALSE(half);
  EXPECT_EQ(half.error().code, MediaErrorCode::damaged);
  EXPECT_THAT(half.error().message(), HasSubstr("is damaged or incomplete: moov atom not found; copy it again"));

  const std::string early = content("early.mov");
  directory().write("cut.mov", std::string_view(early).substr(0, early.size() - 1000));
  const MediaDescription cut = described("cut.mov");
  ASSERT_EQ(cut.warnings.size(), 1U);
  EXPECT_EQ(cut.warnings.front().code, MediaWarningCode::endsBeforeItsData);
  EXPECT_EQ(cut.warnings.front().detail, "1000 bytes are missing");
  EXPECT_EQ(cut.video.at(0).frameCount, described("early.mov").video.at(0).frameCount);

  // Every file cut at some places and overwritten at others: an error or a description, and never a crash.
  for (const char* const name : {"early.mov", "clip.mxf", "clip.mkv", "clip.mp4", "clip.avi"}) {
    const std::string whole = content(name);
    for (std::size_t part = 1; part < 12; ++part) {
      const std::size_t place = whole.size() * part / 12;
      directory().write("made", std::string_view(whole).substr(0, place));
      (void)describeMedia(Url::fromFilePath(path("made")));
      std::string overwritten = whole;
      const std::size_t count = std::min<std::size_t>(64, whole.size() - place);
      overwritten.replace(place, count, count, part % 2 == 0 ? '\xff' : '\0');
      directory().write("made", overwritten);
      (void)describeMedia(Url::fromFilePath(path("made")));
    }
  }
  EXPECT_EQ(caught.size(), 0);
}

TEST_F(HostileMediaTest, TakesEveryNameForTheNameOfAFile) {
  ASSERT_NO_FATAL_FAILURE(
      make({{"clip.mov", "-map 0:v -frames:v 2 -c:v mjpeg"}, {"still.png", "-map 0:v -frames:v 1 -update 1"}}));
  const std::string clip = content("clip.mov");
  const std::string still = content("still.png");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory().path());
  for (const char* const name :
       {"http:", "http:host.mov", "concat:clip.mov|clip.mov", "file:clip.mov", "pipe:", "-", "clip%03d.mov", "cl*.mov",
        "subfile,,start,0,end,9,,:clip.mov", "a\nb.mov", "\xff.mov", "data:video,"}) {
    directory().write(name, clip);
    const auto description = describeMedia(Url::fromFilePath(name));
    ASSERT_TRUE(description) << name << description.error().message();
    EXPECT_EQ(description->video.at(0).frameCount, 2) << name;
    EXPECT_EQ(description->path, name);
  }
  for (const char* const name : {"%d.png", "still*.png", "st%%ll.png", "{a,b}.png"}) {
    directory().write(name, still);
    ASSERT_TRUE(describeMedia(Url::fromFilePath(name))) << name;
  }
  std::filesystem::current_path(before);
  EXPECT_EQ(errorOf("missing%03d.png"), MediaErrorCode::notOpened);
}

TEST_F(HostileMediaTest, OpensNoOtherFile) {
  ASSERT_NO_FATAL_FAILURE(make({{"clip.ts", "-map 0:v -frames:v 2 -c:v mpeg2video"}}));
  const std::string target = path("clip.ts");
  const std::vector<std::pair<std::string, std::string>> files{
      {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\n" + target + "\n#EXT-X-ENDLIST\n"},
      {"list.ffconcat", "ffconcat version 1.0\nfile '" + target + "'\n"},
      {"list.mpd",
       "<?xml version=\"1.0\"?><MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\"><Period><AdaptationSet>"
       "<Representation id=\"0\"><BaseURL>clip.ts</BaseURL></Representation></AdaptationSet></Period></MPD>"},
      {"list.sdp", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=video 5004 RTP/AVP 33\n"},
      {"image.svg",
       "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"9\" height=\"9\"><image href=\"/etc/passwd\"/></svg>"},
  };
  for (const auto& [name, text] : files) {
    directory().write(name, text);
    EXPECT_EQ(errorOf(name), MediaErrorCode::unknownFormat) << name;
    std::filesystem::copy_file(path(name), path("disguised.mov"), std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(errorOf("disguised.mov"), MediaErrorCode::unknownFormat) << name;
  }
}

TEST_F(HostileMediaTest, RefusesAnIndexOfMoreSamplesThanBytes) {
  ASSERT_NO_FATAL_FAILURE(make({{"clip.mov", "-map 0:v -map 1:a -frames:v 4 -c:v mjpeg -c:a pcm_s16le"},
                                {"pieces.mp4", "-map 0:v -c:v mpeg4 -movflags empty_moov+default_base_moof -g 1"}}));
  const std::string clip = content("clip.mov");
  // The size and the number of all samples follow the version and flags of the first table of sizes, the video's.
  std::string claiming = clip;
  putBigEndian(claiming, clip.find("stsz") + 8, 1);
  putBigEndian(claiming, clip.find("stsz") + 12, 89'000'000);
  directory().write("claiming.mov", claiming);
  const auto description = describeMedia(Url::fromFilePath(path("claiming.mov")));
  ASSERT_FALSE(description);
  EXPECT_EQ(description.error().code, MediaErrorCode::damaged);
  EXPECT_THAT(description.error().detail, HasSubstr("89000000 samples"));
  // The sound's table claims as many as it likes, since it has an entry for each chunk.
  std::string loud = clip;
  putBigEndian(loud, clip.rfind("stsz") + 12, 89'000'000);
  directory().write("loud.mov", loud);
  EXPECT_EQ(errorOf("loud.mov"), std::nullopt);

  std::string pieces = content("pieces.mp4");
  const std::size_t run = pieces.find("trun");
  ASSERT_NE(run, std::string::npos);
  putBigEndian(pieces, run + 4, 0);
  putBigEndian(pieces, run + 8, 89'000'000);
  directory().write("pieces.mp4", pieces);
  EXPECT_EQ(errorOf("pieces.mp4"), MediaErrorCode::damaged);
}

TEST_F(HostileMediaTest, StopsAtItsLimits) {
  ASSERT_NO_FATAL_FAILURE(make({{"clip.mov", "-map 0:v -map 1:a -c:v mjpeg -c:a pcm_s16le"}}));
  const Url url = Url::fromFilePath(path("clip.mov"));
  for (const DescriptionLimits& limits :
       {DescriptionLimits{.bytes = 1000}, DescriptionLimits{.time = std::chrono::milliseconds(-1)}}) {
    const auto description = describeMedia(url, limits);
    ASSERT_FALSE(description);
    EXPECT_EQ(description.error().code, MediaErrorCode::limitReached);
    EXPECT_THAT(description.error().detail, Not(IsEmpty()));
  }
  EXPECT_TRUE(describeMedia(url));
}

}  // namespace
}  // namespace meridian::test
