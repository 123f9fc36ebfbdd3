// Files that are damaged, that are not media, or that would make a reader open something else.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "meridian/engine/mxf_index.h"
#include "tests/engine/made_media.h"
#include "tests/support/process.h"

namespace meridian::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// A box of a movie.
std::string box(const std::string& type, const std::string& content) {
  std::string result(4, '\0');
  putBigEndian(result, 0, static_cast<std::uint32_t>(8 + content.size()));
  return result + type + content;
}

std::string numbers(std::initializer_list<std::uint32_t> list) {
  std::string result(4 * list.size(), '\0');
  std::size_t place = 0;
  for (const std::uint32_t number : list) putBigEndian(result, 4 * place++, number);
  return result;
}

std::uint32_t bigEndianAt(const std::string& bytes, std::size_t place) {
  std::uint32_t number = 0;
  for (std::size_t each = 0; each < 4; ++each)
    number = number << 8U | static_cast<unsigned char>(bytes.at(place + each));
  return number;
}

/// Inserts a box into the first track of a movie whose header is its last box.
std::string withBoxInTrack(std::string movie, const std::string& inserted) {
  const std::size_t track = movie.find("trak");
  for (const std::size_t type : {movie.rfind("moov"), track}) {
    putBigEndian(movie, type - 4, bigEndianAt(movie, type - 4) + static_cast<std::uint32_t>(inserted.size()));
  }
  return movie.insert(track + 4, inserted);
}

class HostileMediaTest : public MadeMedia {
 protected:
  [[nodiscard]] std::optional<MediaErrorCode> errorOf(const std::string& name) const {
    const auto description = describeMedia(Url::fromFilePath(path(name)));
    if (description) return std::nullopt;
    EXPECT_EQ(description.error().place, path(name));
    return description.error().code;
  }
};

/// Works in a directory while it exists.
class WorkingDirectory {
 public:
  explicit WorkingDirectory(const std::filesystem::path& path) { std::filesystem::current_path(path); }
  ~WorkingDirectory() { std::filesystem::current_path(before_); }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
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
  // Two headers of MP3 frames are a guess, which no extension of images supports.
  const std::string guess = "\xff\xfb\x90\x64" + std::string(413, '\0') + "\xff\xfb\x90\x64" + std::string(3700, 'a');
  for (const char* const name : {"guess.dat", "guess.mov", "guess.jpg", "guess.png"}) {
    directory().write(name, guess);
    EXPECT_EQ(errorOf(name), unknownFormat) << name;
  }
  // The beginning of a clip of a later RED camera.
  directory().write("red.R3D", box("RED2", std::string(4096, '\0')));
  const auto red = describeMedia(Url::fromFilePath(path("red.R3D")));
  ASSERT_FALSE(red);
  EXPECT_EQ(red.error().code, unknownFormat);
  EXPECT_THAT(red.error().detail, HasSubstr("RED camera"));
  // A CINE of version 0, which is whole: FFmpeg reads version 1 alone.
  directory().write("old.cine", std::string("CI\x2c\0\0\0\0\0", 8) + std::string(12, '\0') +
                                    std::string("\1\0\0\0\x2c\0\0\0\x2c\0\0\0\x2c\0\0\0", 16) + std::string(200, '\0'));
  EXPECT_EQ(errorOf("old.cine"), unknownFormat);
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
            "\"/dev/zero\": is not a regular file: a device; name a media file, or a directory of numbered images");
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
                                {"clip.avi", "-map 0:v -c:v mjpeg"},
                                {"clip.wav", "-map 1:a"},
                                {"clip.aiff", "-map 1:a"}}));
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
  for (const char* const name : {"clip.mxf", "clip.avi", "clip.wav", "clip.aiff"}) {
    EXPECT_TRUE(described(name).warnings.empty()) << name;
    directory().write(name, content(name).substr(0, content(name).size() / 2));
    ASSERT_EQ(described(name).warnings.size(), 1U) << name;
    EXPECT_EQ(described(name).warnings.front().code, MediaWarningCode::endsBeforeItsData) << name;
  }

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
  const WorkingDirectory inDirectory(directory().path());
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

TEST_F(HostileMediaTest, RefusesAnIndexThatFewBytesClaim) {
  using enum MediaErrorCode;
  ASSERT_NO_FATAL_FAILURE(make({{"clip.mov", "-map 0:v -map 1:a -frames:v 4 -c:v mjpeg -c:a pcm_s16le"},
                                {"pieces.mp4", "-map 0:v -c:v mpeg4 -movflags empty_moov+default_base_moof -g 1"}}));
  const std::string clip = content("clip.mov");
  const std::string type = clip.substr(0, bigEndianAt(clip, 0));
  const std::string rest = clip.substr(type.size());
  const auto patched = [](std::string bytes, std::size_t place, std::initializer_list<std::uint32_t> list) {
    const std::string written = numbers(list);
    return bytes.replace(place, written.size(), written);
  };
  const auto renamed = [](std::string bytes, const std::string& from, const std::string& to) {
    return bytes.replace(bytes.rfind(from), from.size(), to);
  };
  // The size and the number of all samples follow the version and flags of the first table of sizes, the video's.
  const std::string claiming = patched(clip, clip.find("stsz") + 8, {1, 89'000'000});
  const std::string pieces = content("pieces.mp4");
  std::string freeBoxes;
  for (int count = 0; count < 1001; ++count) freeBoxes += box("free", "");
  const auto edits = [](int number) {
    std::string list = numbers({0, static_cast<std::uint32_t>(number)});
    for (int count = 0; count < number; ++count) list += numbers({1, 0, 0x10000});
    return box("edts", box("elst", list));
  };
  const auto keys = [](std::uint32_t number, std::uint32_t size) {
    return box("keys", numbers({0, number, size}) + "mdtakey");
  };
  struct Row {
    const char* name;
    std::string bytes;
    MediaErrorCode code = damaged;
  };
  const std::vector<Row> rows{
      {"samples of one size", claiming},
      {"a container in the place of another", patched(claiming, claiming.find("minf"), {0x64696e66})},
      {"after many boxes", type + freeBoxes + claiming.substr(type.size())},
      {"a header in another one", renamed(claiming, "moov", "hoov")},
      {"a compressed header", type + box("moov", box("cmov", "")) + rest, unknownFormat},
      // The sound's table claims as many samples as it likes; FFmpeg divides its chunks into parts.
      {"long chunks of sound", patched(clip, clip.rfind("stsc") + 8, {1, 1, 0x7fffffff})},
      {"edits that repeat the index", withBoxInTrack(clip, edits(200)), limitReached},
      {"runs of offsets", withBoxInTrack(clip, box("ctts", numbers({0, 1, 75'000'000, 0})))},
      {"groups of samples", withBoxInTrack(clip, box("sbgp", numbers({0, 0x73796e63, 1, 250'000'000, 1})))},
      {"groups of version 1",
       withBoxInTrack(clip, box("sbgp", numbers({1U << 24U, 0x73796e63, 0, 1, 250'000'000, 1})))},
      {"many keys", withBoxInTrack(clip, keys(125'000'000, 11))},
      {"a long key", withBoxInTrack(clip, keys(1, 0x40000000))},
      {"encrypted samples", withBoxInTrack(clip, box("senc", numbers({0, 10'000'000})))},
      {"a fragment", patched(pieces, pieces.find("trun") + 4, {0, 89'000'000})},
      {"fragments", withBoxInTrack(clip, box("sidx", numbers({0, 0, 1, 0, 0, 0xffff}))), damaged},
      {"a track in a track", withBoxInTrack(clip, box("moov", ""))},
      {"a table in a sample description", renamed(clip, "sowt", "stsz")},
      {"a long sample description", patched(clip, clip.find("stsd") + 12, {0x7fffffff})},
      {"two tables of one kind", renamed(clip, "stco", "stsc")},
  };
  directory().write("hostile.mov", clip);
  const Url url = Url::fromFilePath(path("hostile.mov"));
  const DescriptionLimits limits{.indexEntries = 500};
  EXPECT_TRUE(describeMedia(url, limits));
  for (const Row& row : rows) {
    directory().write("hostile.mov", row.bytes);
    const auto description = describeMedia(url, limits);
    ASSERT_FALSE(description) << row.name;
    EXPECT_EQ(description.error().code, row.code) << row.name << ": " << description.error().message();
  }
  // Honest movies: short pieces of sound in many edits, and keys.
  ASSERT_NO_FATAL_FAILURE(make({{"sound.mov", "-map 1:a -af aloop=loop=80:size=12000 -c:a aac -b:a 16k"}}));
  const std::string sound = content("sound.mov");
  for (const std::string& inserted : {edits(80), keys(1, 11)}) {
    directory().write("hostile.mov", withBoxInTrack(sound, inserted));
    EXPECT_EQ(errorOf("hostile.mov"), std::nullopt);
  }
  // A hole is cheap.
  directory().write("hostile.mov", claiming);
  std::filesystem::resize_file(path("hostile.mov"), std::uintmax_t{100} << 30U);
  EXPECT_EQ(errorOf("hostile.mov"), limitReached);
}

TEST_F(HostileMediaTest, RefusesAnMxfIndexThatFewBytesClaim) {
  ASSERT_NO_FATAL_FAILURE(make({{"clip.mxf", "-map 0:v -r 25 -c:v mpeg2video"}}));
  std::string clip = content("clip.mxf");
  const std::string duration("\x3f\x0d\0\x08", 4);
  std::size_t segments = 0;
  for (std::size_t place = 0; (place = clip.find(duration, place)) != std::string::npos; place += 12) {
    putBigEndian(clip, place + 8, 3'000'000);
    ++segments;
  }
  ASSERT_GT(segments, 0U);
  directory().write("claiming.mxf", clip);
  EXPECT_EQ(errorOf("claiming.mxf"), MediaErrorCode::limitReached);
}

TEST(MxfIndexCounterTest, FindsASegmentHoweverTheReadsDivideIt) {
  const std::string key("\x06\x0e\x2b\x34\x02\x53\x01\x01\x0d\x01\x02\x01\x01\x10\x01\0", 16);
  const std::string units("\x3f\x0d\0\x08\0\0\0\0\0\0\x10\x01", 12);
  const std::string entries("\x3f\x0a\0\x13\0\0\0\x01\0\0\0\x0b___________", 23);
  const std::string segment = key + '\x23' + units + entries;
  const std::string content = std::string(40, 'x') + segment + key + '\x0c' + units + std::string(40, 'x');
  const ReadsAt readAt = [&content](std::uint64_t place, std::span<char> memory) {
    return place <= content.size() && content.copy(memory.data(), memory.size(), place) == memory.size();
  };
  for (std::size_t size = 1; size <= content.size(); ++size) {
    MxfIndexCounter counter;
    for (std::size_t place = 0; place < content.size(); place += size) {
      counter.look(place, std::string_view(content).substr(place, size), readAt);
    }
    // The second segment has no entries, and FFmpeg makes none for it.
    EXPECT_EQ(counter.entries(), 0x1001U) << size;
  }
}

TEST_F(HostileMediaTest, RefusesAnAviOfTooManyStreams) {
  std::string maps = "-c:a pcm_s16le";
  for (int stream = 0; stream < 32; ++stream) maps += " -map 1:a";
  ASSERT_NO_FATAL_FAILURE(make({{"most.avi", maps}, {"many.avi", maps + " -map 1:a"}}));
  EXPECT_EQ(errorOf("most.avi"), std::nullopt);
  EXPECT_EQ(errorOf("many.avi"), MediaErrorCode::limitReached);
}

TEST_F(HostileMediaTest, DecodesNoHugeImage) {
  ASSERT_NO_FATAL_FAILURE(make({{"still.png", "-map 0:v -frames:v 1 -update 1"}}));
  std::string still = content("still.png");
  const std::size_t header = still.find("IHDR");
  putBigEndian(still, header + 4, 13'000);
  putBigEndian(still, header + 8, 11'000);
  std::uint32_t sum = 0xffffffff;  // the header's checksum (PNG, annex D)
  for (const char byte : still.substr(header, 17)) {
    sum ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit) sum = sum >> 1U ^ ((sum & 1U) != 0 ? 0xedb88320 : 0);
  }
  putBigEndian(still, header + 17, ~sum);
  directory().write("huge.png", still);
  EXPECT_EQ(described("huge.png").video.at(0).pixelFormat, "");
  const Outcome ffprobe = run({"ffprobe", "-v", "quiet", "-show_entries", "stream=width", path("huge.png")});
  EXPECT_THAT(ffprobe.output, HasSubstr("width=13000"));  // which its own limit admits
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
  EXPECT_TRUE(describeMedia(url, {.time = std::chrono::milliseconds::max()}));
}

}  // namespace
}  // namespace meridian::test
