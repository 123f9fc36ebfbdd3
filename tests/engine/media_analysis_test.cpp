// Analyses of real media: items that are independent of each other, images and results that are whole or not there.
#include "meridian/engine/media_analysis.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "meridian/cli/media_analysis_argument_factory.h"
#include "meridian/serialization/media_analysis_json.h"
#include "tests/engine/made_media.h"

namespace meridian::test {
namespace {

using Factory = MediaAnalysisCLIArgumentFactory;
using Json = nlohmann::ordered_json;
using testing::ElementsAre;
using testing::IsEmpty;

class MediaAnalysisTest : public MadeMedia {
 protected:
  void SetUp() override {
    MadeMedia::SetUp();
    if (IsSkipped()) return;
    std::filesystem::create_directory(path("card"));
    std::filesystem::create_directory(path("work"));
    ASSERT_NO_FATAL_FAILURE(make({{"clip.mov", "-map 0:v -map 1:a -c:v mjpeg -c:a pcm_s16le -timecode 01:00:00:00"},
                                  {"card/clip.mov", "-map 0:v -frames:v 3 -c:v mpeg4"},
                                  {"sound.wav", "-map 1:a"}}));
    directory().write("empty.mov", "");
  }

  [[nodiscard]] Factory::BasicOptions basic(const std::vector<std::string>& names,
                                            std::optional<std::string> identifier = std::nullopt) const {
    std::vector<std::string> paths;
    for (const std::string& name : names) paths.push_back(path(name));
    return Factory::buildBasicOptions(std::move(paths), path("work"), path("results.json"), std::move(identifier),
                                      false);
  }

  /// Returns the names of everything below the work directory.
  [[nodiscard]] std::vector<std::string> left() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(path("work"))) {
      names.push_back(std::filesystem::relative(entry.path(), path("work")));
    }
    std::ranges::sort(names);
    return names;
  }
};

std::vector<std::string> codesOf(const Expected<MediaAnalysis, std::vector<MediaAnalysisError>>& analysis) {
  std::vector<std::string> codes;
  if (!analysis) {
    for (const MediaAnalysisError& error : analysis.error()) codes.emplace_back(codeOf(error));
  }
  return codes;
}

TEST_F(MediaAnalysisTest, AnalysesEachItemByItselfInOrder) {
  auto options = basic({"clip.mov", "none.mov", "empty.mov", "sound.wav", "card/clip.mov"}, "A 1");
  const auto images = Factory::buildImageOptions({1, 0, 0.5}, 32, std::nullopt, true, std::nullopt);
  std::vector<double> portions;
  const auto analysis = analyzeMedia(options, &images, [&](const MediaAnalysisProgress& progress) {
    EXPECT_EQ(progress.itemCount, 5U);
    portions.push_back(progress.portion);
  });
  ASSERT_TRUE(analysis);
  EXPECT_FALSE(analysis->isFlawless());
  EXPECT_EQ(portions.size(), 5U + 2 * 3U);
  EXPECT_THAT(portions, testing::WhenSorted(testing::ElementsAreArray(portions)));
  EXPECT_THAT(left(), ElementsAre("A 1", "A 1/A 1-1-1.jpg", "A 1/A 1-1-2.jpg", "A 1/A 1-1-3.jpg", "A 1/A 1-5-1.jpg",
                                  "A 1/A 1-5-2.jpg", "A 1/A 1-5-3.jpg"));

  ASSERT_TRUE(writeMediaAnalysis(*analysis, path("results.json")));
  const Json results = Json::parse(content("results.json"));
  EXPECT_EQ(results["schema"], 1);
  EXPECT_EQ(results["analysisId"], "A 1");
  EXPECT_EQ(results["warnings"][0]["code"], "noFinderImages");
  ASSERT_EQ(results["files"].size(), 5U);
  const std::vector<std::string> codes{"", "pathToAnalyzeDoesNotExist", "empty", "", ""};
  for (std::size_t each = 0; each < codes.size(); ++each) {
    const Json& file = results["files"][each];
    EXPECT_EQ(file["path"], options.pathsToAnalyze()[each]);
    EXPECT_EQ(file["error"].is_null() ? "" : file["error"]["code"], codes[each]);
    EXPECT_EQ(file.contains("container"), codes[each].empty());
    EXPECT_TRUE(file["deep"].is_null());
  }
  const Json& image = results["files"][0]["images"][0];
  EXPECT_EQ(image["location"], 1.0);
  EXPECT_EQ(image["frame"], 14);
  EXPECT_EQ(image["timecodeText"], "01:00:00:14");
  EXPECT_EQ(image["width"], 32);
  EXPECT_EQ(image["path"], path("work/A 1/A 1-1-1.jpg"));
  EXPECT_TRUE(std::filesystem::exists(image["path"].get<std::string>()));
  EXPECT_THAT(results["files"][3]["images"], IsEmpty());
  EXPECT_EQ(results["files"][4]["images"][0]["frame"], 2);

  // Neither the results nor the images of an earlier analysis are replaced.
  const auto again = writeMediaAnalysis({}, path("results.json"));
  ASSERT_FALSE(again);
  EXPECT_EQ(again.error().code, MediaAnalysisCLIError::resultsFileAlreadyExists);
  EXPECT_EQ(Json::parse(content("results.json")), results);
  EXPECT_THAT(codesOf(analyzeMedia(options, &images)), ElementsAre("imageDirectoryNotCreated"));
  EXPECT_EQ(left().size(), 7U);
  removeImages(*analysis);
  EXPECT_THAT(left(), IsEmpty());
}

TEST_F(MediaAnalysisTest, BeginsNothingWithUnusableOptions) {
  const auto images = [](std::vector<float> locations, float width, std::optional<float> factor = {},
                         std::optional<std::string> lut = {}) {
    return Factory::buildImageOptions(std::move(locations), width, factor, false, std::move(lut));
  };
  const std::vector<std::string> clip{"clip.mov"};
  const auto codes = [&](const Factory::BasicOptions& options, const Factory::ImageOptions& image) {
    return codesOf(analyzeMedia(options, &image));
  };
  directory().write("bad.cube", "LUT_3D_SIZE 2\n0 0 0\n");
  EXPECT_THAT(codes(basic(clip), images({0.5, 1.5}, 0, 2)),
              ElementsAre("missingMaxImageWidth", "locationOutOfRange", "unusableCompressionFactor"));
  EXPECT_THAT(codes(basic(clip), images({}, 10)), ElementsAre("missingSnapshotLocations"));
  EXPECT_THAT(codes(basic(clip), images({0}, 10, {}, path("bad.cube"))), ElementsAre("truncated"));
  EXPECT_THAT(codes(basic(clip), images({0}, 10, {}, path("none.cube"))), ElementsAre("notOpened"));
  EXPECT_THAT(codes(basic({}), images({0}, 10)), ElementsAre("pathToAnalyzeNotSupplied"));
  EXPECT_THAT(codes(basic(clip), Factory::buildImageOptions({0}, 10, -1, std::nullopt, false, std::nullopt)),
              ElementsAre("unusableImageHeight"));
  for (const std::string& identifier :
       {std::string(), std::string(".."), std::string("../a"), std::string(201, 'a'), std::string("\xfe")}) {
    EXPECT_THAT(codes(basic(clip, identifier), images({0}, 10)), ElementsAre("unusableIdentifier"));
  }
  for (const auto& [work, code] : {std::pair("", "workDirectoryNotSupplied"),
                                   {"/none", "workDirectoryDoesNotExist"},
                                   // The system's own directory, in which not even root creates another.
                                   {"/proc/self/fd", "imageDirectoryNotCreated"}}) {
    EXPECT_THAT(codes(Factory::buildBasicOptions({path("clip.mov")}, work, "", std::nullopt, false), images({0}, 10)),
                ElementsAre(code));
  }
  EXPECT_THAT(left(), IsEmpty());
  // Without images, none of that is needed.
  EXPECT_TRUE(analyzeMedia(Factory::buildBasicOptions({path("clip.mov")}, "", "", "..", false)));
}

TEST_F(MediaAnalysisTest, LeavesNothingWhenItIsStoppedOrHasNoImages) {
  const auto images = Factory::buildImageOptions({0, 1}, 32, std::nullopt, false, std::nullopt);
  for (const double portion : {0.0, 0.3, 0.6, 0.85}) {
    std::stop_source stop;
    const auto stopThen = [&](const MediaAnalysisProgress& progress) {
      if (progress.portion >= portion) stop.request_stop();
    };
    EXPECT_THAT(codesOf(analyzeMedia(basic({"clip.mov", "clip.mov", "clip.mov"}), &images, stopThen, stop.get_token())),
                ElementsAre("stopped"));
    EXPECT_THAT(left(), IsEmpty()) << portion;
  }
  EXPECT_TRUE(analyzeMedia(basic({"sound.wav"}), &images)->isFlawless());
  EXPECT_THAT(left(), IsEmpty());
}

}  // namespace
}  // namespace meridian::test
