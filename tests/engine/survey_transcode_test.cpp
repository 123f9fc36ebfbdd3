#include "meridian/engine/survey_transcode.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/engine/made_media.h"

namespace meridian::test {
namespace {

namespace filesystem = std::filesystem;
using testing::HasSubstr;
using Words = std::vector<std::string>;

class SurveyTranscode : public MadeMedia {
 protected:
  void SetUp() override {
    MadeMedia::SetUp();
    if (IsSkipped()) return;
    make({{"clip.mov", "-map 0 -c:v mpeg4"}, {"logo.png", "-map 0 -frames:v 1"}});
    filesystem::create_directory(path("folder"));
    filesystem::current_path(directory().path());
  }
  void TearDown() override { filesystem::current_path("/"); }

  static TranscodeSurvey survey(const Words& words) { return surveyTranscode(explain(words), encoderInventory()); }
};

TEST_F(SurveyTranscode, SaysWhatIsAtThePathsThatAreWrittenTo) {
  filesystem::create_hard_link("clip.mov", "hard.mov");
  filesystem::create_symlink("clip.mov", "soft.mov");
  filesystem::create_symlink("nowhere", "dangling.mov");
  filesystem::create_symlink("frames/f.1.png", "frame.png");
  filesystem::create_symlink(".", "here");
  filesystem::create_directory("frames");
  filesystem::copy_file("logo.png", "frames/f.1.png");
  directory().write("frames/notes.mov", "");
  ASSERT_EQ(mkfifo("fifo", 0600), 0);
  const auto changed = [](auto change) {
    OutputState state;
    change(state);
    return state;
  };
  const OutputState free;
  const OutputState same = changed([](OutputState& s) { s.exists = true, s.sameSource = "clip.mov"; });
  const OutputState taken = changed([](OutputState& s) { s.exists = true; });
  const OutputState unwritable = changed([](OutputState& s) { s.directoryIsWritable = false; });
  const OutputState tooLong = changed([](OutputState& s) { s.nameIsTooLong = true; });
  const OutputState nowhere = changed([](OutputState& s) { s.directoryExists = s.directoryIsWritable = false; });
  const OutputState special = changed([](OutputState& s) { s.exists = s.isSpecial = true; });
  const OutputState folder = changed([](OutputState& s) { s.exists = s.isDirectory = true; });
  const OutputState noProgress = changed([](OutputState& s) { s.progressFileIsWritable = false; });
  const auto usedBy = [&](const std::string& file) {
    return changed([&](OutputState& s) { s.sameAsProgressFile = file; });
  };
  const OutputState noWork = changed([](OutputState& s) { s.workDirectoryIsUsable = false; });
  const struct {
    Words words;
    OutputState expected;
  } cases[] = {
      {{"-out", "new.mov"}, free},
      {{"-out", "logo.png"}, taken},
      {{"-out", "clip.mov"}, same},
      {{"-out", "hard.mov"}, same},
      {{"-out", "soft.mov"}, same},
      {{"-out", "folder/../clip.mov"}, same},
      {{"-out", "dangling.mov"}, taken},
      {{"-out", "fifo"}, special},
      {{"-out", "/dev/null"}, special},
      {{"-out", "folder"}, folder},
      {{"-out", "folder/new.mov"}, free},
      {{"-out", "missing/new.mov"}, nowhere},
      {{"-out", "clip.mov/new.mov"}, nowhere},
      {{"-out", std::string(300, 'x') + ".mov"}, tooLong},
      {{"-out", "/proc/new.mov"}, geteuid() == 0 ? free : unwritable},
      {{"-work_dir", "folder"}, free},
      {{"-work_dir", "missing"}, noWork},
      {{"-work_dir", "clip.mov"}, noWork},
      {{"-progress_file", "new.json"}, free},
      {{"-progress_file", "fifo"}, free},
      {{"-progress_file", "logo.png"}, free},
      {{"-progress_file", "folder"}, noProgress},
      {{"-progress_file", "missing/new.json"}, noProgress},
      {{"-progress_file", "soft.mov"}, usedBy("clip.mov")},
      {{"-out", "new.mov", "-progress_file", "folder/../new.mov"}, usedBy("new.mov")},
      {{"-out", "new.mov", "-progress_file", path("new.mov")}, usedBy("new.mov")},
      {{"-out", "here/new.mov", "-progress_file", "new.mov"}, usedBy("here/new.mov")},
      {{"-out", "new.mov", "-progress_file", "folder/new.mov"}, free},
      {{"-in_1_0", "frames", "-progress_file", "frames/f.1.png"}, usedBy("frames/f.1.png")},
      {{"-in_1_0", "frames", "-progress_file", "frame.png"}, usedBy("frame.png")},
      {{"-in_1_0", "frames", "-progress_file", "frames/f.2.png"}, free},
      {{"-in_1_0", "frames", "-out", "frames/notes.mov"}, taken},
      {{"-clut", "logo.png", "-progress_file", path("logo.png")}, usedBy("logo.png")},
      {{"-wmf_path", "LOGO.png", "-progress_file", path("logo.png")}, usedBy("logo.png")},
  };
  for (const auto& [words, expected] : cases) {
    Words all{"-in_0_0", "clip.mov"};
    all.insert(all.end(), words.begin(), words.end());
    EXPECT_EQ(survey(all).surroundings.output, expected) << testing::PrintToString(words);
  }
  EXPECT_FALSE(filesystem::exists("new.mov"));
  EXPECT_FALSE(filesystem::exists("new.json"));
}

TEST_F(SurveyTranscode, DescribesTheInputFilesInTheirOrder) {
  const auto media = survey({"-in_1_0", "missing.mov", "-in_0_1", "logo.png", "-in_0_0", "clip.mov"}).media;
  ASSERT_EQ(media.size(), 3U);
  EXPECT_EQ(media[0]->path, "clip.mov");
  EXPECT_EQ(media[1]->path, "logo.png");
  EXPECT_EQ(media[2].error().code, MediaErrorCode::notOpened);
}

TEST_F(SurveyTranscode, FindsTheWatermarkAsWrittenOrInAnotherCase) {
  filesystem::create_directory("Logos");
  filesystem::copy_file("logo.png", "Logos/Show.png");
  filesystem::create_directory("Twice");
  filesystem::copy_file("logo.png", "Twice/A.png");
  filesystem::copy_file("logo.png", "Twice/a.PNG");
  directory().write("Broken.png", "no image");
  // Each of many directories has two names on the way, and one has too many.
  std::string detour = "twice/";
  for (const char* const name : {"Detour", "detour"}) filesystem::create_directory(filesystem::path("Twice") / name);
  for (int count = 0; count < 300; ++count) detour += "DETOUR/../";
  filesystem::create_directory("Many");
  for (int name = 0; name < 128; ++name) {
    std::string letters = "abcdefg.png";
    for (std::size_t bit = 0; bit < 7; ++bit) {
      if ((name >> bit & 1) != 0) letters[bit] = static_cast<char>(letters[bit] - 'a' + 'A');
    }
    directory().write("Many/" + letters, "");
  }
  const struct {
    std::string written;
    /// The path that is found, or a part of the error.
    std::string expected;
  } cases[] = {
      {"logo.png", "logo.png"},
      {"LOGO.PNG", "logo.png"},
      {"Logos/Show.png", "Logos/Show.png"},
      {"LOGOS/show.png", "Logos/Show.png"},
      {path("LOGOS/./../Logos/SHOW.png"), path("Logos/./../Logos/Show.png")},
      {"Twice/a.PNG", "Twice/a.PNG"},
      {"twice/a.png", "may be \"Twice/A.png\" or \"Twice/a.PNG\""},
      {"Missing/x.png", "cannot be opened"},
      {detour + "a.png", "may be \"Twice/"},
      {"many/ABCDEFG.png", "has too many names that differ in case alone"},
      {"folder", "is a directory"},
      {"clip.mov", "is not an image"},
      {"broken.png", "is not in a media format"},
  };
  for (const auto& [written, expected] : cases) {
    const auto found = survey({"-wmf_path", written}).surroundings.watermark;
    ASSERT_TRUE(found) << written;
    if (*found) {
      EXPECT_EQ((*found)->path, expected);
      EXPECT_EQ((*found)->size, (ImageSize{64, 36}));
    } else {
      EXPECT_THAT(found->error(), HasSubstr(expected)) << written;
      EXPECT_FALSE(filesystem::is_regular_file(expected)) << written;
    }
  }
  EXPECT_FALSE(survey({}).surroundings.watermark);
  // The plan says where the path differs from what was written.
  const auto warnings = [](const std::string& written) {
    return planTranscode(explain({"-in_0_0", "clip.mov", "-out", "new.mov", "-vcodec", "mp4", "-wmf_path", written}))
        ->warnings.size();
  };
  EXPECT_EQ(warnings("LOGO.png"), warnings("Logos/Show.png") + 1);
}

TEST_F(SurveyTranscode, SaysWhyALutCannotBeUsed) {
  directory().write("good.cube", "LUT_1D_SIZE 2\n0 0 0\n1 1 1\n");
  directory().write("short.cube", "LUT_3D_SIZE 2\n0 0 0\n1 1 1\n");
  const auto error = [](const std::string& lut) { return survey({"-clut", lut}).surroundings.lutError; };
  EXPECT_EQ(error("good.cube"), std::nullopt);
  EXPECT_THAT(error("short.cube").value_or(""), HasSubstr("has fewer rows than its size needs"));
  EXPECT_THAT(error("missing.cube").value_or(""), HasSubstr("cannot be opened: No such file"));
  EXPECT_NE(error("clip.mov"), std::nullopt);
}

TEST_F(SurveyTranscode, PlansWithWhatItFinds) {
  const auto plan = planTranscode(explain({"-in_0_0", "clip.mov", "-out", "new.mov", "-vcodec", "mp4"}));
  ASSERT_TRUE(plan) << plan.error().front().message();
  EXPECT_EQ(plan->video->frameCount, 15);
  const auto errors = planTranscode(explain({"-in_0_0", "missing.mov", "-out", "/dev/null"}));
  ASSERT_FALSE(errors);
  std::vector<TranscodePlanErrorCode> codes;
  for (const TranscodePlanError& error : errors.error()) codes.push_back(error.code);
  EXPECT_THAT(codes, testing::UnorderedElementsAre(TranscodePlanErrorCode::inputNotRead,
                                                   TranscodePlanErrorCode::outputIsSpecial));
}

}  // namespace
}  // namespace meridian::test
