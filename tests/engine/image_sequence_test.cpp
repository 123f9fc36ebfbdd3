#include "meridian/engine/image_sequence.h"

#include <gmock/gmock.h>

#include "meridian/media/media_names.h"
#include "tests/engine/made_media.h"

namespace meridian::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(ImageSequenceTest, OrdersImagesByNumberAndCountsWhatIsMissing) {
  const TemporaryDirectory folder;
  for (const char* const name :
       {"A.9.dpx", "A.10.dpx", "A.0012.dpx", ".A.11.dpx", "A.dpx", "notes.7.txt", "A.13.dpx~"}) {
    folder.write(name, "12345");
  }
  std::filesystem::create_directory(folder.path() / "A.11.dpx");
  const auto sequence = imageSequence(folder.path().string());
  ASSERT_TRUE(sequence) << sequence.error().message();
  std::vector<std::string> names;
  for (const std::string& path : sequence->paths) names.push_back(path.substr(path.rfind('/') + 1));
  EXPECT_THAT(names, ElementsAre("A.9.dpx", "A.10.dpx", "A.0012.dpx"));
  EXPECT_EQ(sequence->size, 15U);
  EXPECT_EQ(sequence->firstNumber, 9);
  EXPECT_EQ(sequence->lastNumber, 12);
  EXPECT_EQ(sequence->missingCount, 1);
}

TEST(ImageSequenceTest, IsAnErrorWithoutExactlyOneSequence) {
  const TemporaryDirectory folder;
  const std::string path = folder.path().string();
  EXPECT_EQ(imageSequence(path).error().code, MediaErrorCode::noImageSequence);
  folder.write("a.1.png", "");
  folder.write("1234567890123456789.png", "");  // no number has so many digits
  EXPECT_TRUE(imageSequence(path));
  folder.write("b\n.2.png", "");
  const auto two = imageSequence(path);
  ASSERT_FALSE(two);
  EXPECT_EQ(two.error().code, MediaErrorCode::noImageSequence);
  EXPECT_THAT(two.error().message(),
              AllOf(HasSubstr("more than one"), HasSubstr("\"a.1.png\" and \"b\\n.2.png\""), Not(HasSubstr("\n"))));
  EXPECT_EQ(imageSequence(path + "/none").error().code, MediaErrorCode::notOpened);
}

TEST(ImageSequenceTest, IgnoresTheCaseOfExtensionsAndCountsNumbersThatRepeat) {
  const TemporaryDirectory directory;
  for (const char* const name : {"A.1.dpx", "A.2.DPX", "A.02.dpx", "A.0001.Dpx"}) directory.write(name, "");
  const auto sequence = imageSequence(directory.path().string());
  ASSERT_TRUE(sequence) << sequence.error().message();
  EXPECT_EQ(sequence->paths.size(), 4U);
  EXPECT_EQ(sequence->missingCount, 0);
  EXPECT_EQ(sequence->repeatedCount, 2);
  directory.write("A.3.jpg", "");
  EXPECT_THAT(imageSequence(directory.path().string()).error().detail, HasSubstr("A.3.jpg\""));
}

TEST(ImageSequenceTest, StopsAtItsLimits) {
  const TemporaryDirectory directory;
  for (const char* const name : {"A.1.dpx", "A.2.dpx", "notes.txt"}) directory.write(name, "");
  const std::string path = directory.path().string();
  EXPECT_TRUE(imageSequence(path, {.directoryEntries = 3}));
  for (const DescriptionLimits& limits :
       {DescriptionLimits{.directoryEntries = 2}, DescriptionLimits{.time = std::chrono::milliseconds(-1)}}) {
    EXPECT_EQ(imageSequence(path, limits).error().code, MediaErrorCode::limitReached);
    const auto description = describeMedia(Url::fromFilePath(path), limits);
    ASSERT_FALSE(description);
    EXPECT_EQ(description.error().code, MediaErrorCode::limitReached);
  }
}

class DescribedSequenceTest : public MadeMedia {};

TEST_F(DescribedSequenceTest, IsDescribedByItsFirstImage) {
  std::filesystem::create_directory(path("shot"));
  ASSERT_NO_FATAL_FAILURE(
      make({{"shot/A001_%04d.dpx", "-map 0:v -frames:v 4 -start_number 86399 -vf format=gbrp10 -c:v dpx"}}));
  std::filesystem::remove(path("shot/A001_86401.dpx"));
  const MediaDescription shot = described("shot");
  EXPECT_EQ(shot.path, path("shot"));
  EXPECT_EQ(shot.container, SLVMediaFileContainerImageSequence);
  ASSERT_EQ(shot.video.size(), 1U);
  EXPECT_EQ(shot.video.front().frameCount, 3);
  EXPECT_EQ(shot.video.front().frameRate, std::nullopt);
  EXPECT_EQ(shot.video.front().bitDepth, 10);
  EXPECT_EQ(shot.video.front().chroma, ChromaSubsampling::rgb);
  EXPECT_EQ(shot.size, 3 * std::filesystem::file_size(path("shot/A001_86399.dpx")));
  ASSERT_EQ(shot.warnings.size(), 1U);
  EXPECT_EQ(shot.warnings.front().code, MediaWarningCode::missingImages);
  EXPECT_THAT(shot.warnings.front().detail, "1 between 86399 and 86402");
  std::filesystem::copy_file(path("shot/A001_86400.dpx"), path("shot/A001_086400.dpx"));
  EXPECT_EQ(described("shot").warnings.back().code, MediaWarningCode::repeatedImages);
}

}  // namespace
}  // namespace meridian::test
