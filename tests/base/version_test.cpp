#include "meridian/version.h"

#include <gtest/gtest.h>

#include <string>

namespace meridian {
namespace {

static_assert(MERIDIAN_VERSION_AT_LEAST(MERIDIAN_VERSION_MAJOR, MERIDIAN_VERSION_MINOR, MERIDIAN_VERSION_PATCH));
static_assert(MERIDIAN_VERSION_AT_LEAST(0, 0, 99));
static_assert(!MERIDIAN_VERSION_AT_LEAST(MERIDIAN_VERSION_MAJOR, MERIDIAN_VERSION_MINOR, MERIDIAN_VERSION_PATCH + 1));
static_assert(!MERIDIAN_VERSION_AT_LEAST(MERIDIAN_VERSION_MAJOR, MERIDIAN_VERSION_MINOR + 1, 0));
static_assert(!MERIDIAN_VERSION_AT_LEAST(MERIDIAN_VERSION_MAJOR + 1, 0, 0));

TEST(Version, IsTheSameInHeadersTextAndBuild) {
  const auto [major, minor, patch] = libraryVersion();
  EXPECT_EQ(libraryVersion(), headerVersion);
  EXPECT_EQ(versionText(), std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(patch));
  EXPECT_EQ(versionText(), MERIDIAN_PROJECT_VERSION);
}

}  // namespace
}  // namespace meridian
