#include "meridian/suite/localization.h"

#include <gtest/gtest.h>
#include <libintl.h>
#include <unistd.h>

#include <atomic>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "meridian/media/frame_rate.h"
#include "meridian/media/media_corporation.h"
#include "meridian/media/video_dimension.h"
#include "tests/support/process.h"

namespace meridian {
namespace {

TEST(Localization, TheTranslatorMayBeReplacedWhileInUse) {
  EXPECT_EQ(localized("text"), "text");
  // Each translator owns its mark, so that the sanitizers see the use of a destroyed one.
  const auto setMark = [](int i) {
    const auto mark = std::make_shared<std::string>(100, static_cast<char>('0' + i % 10));
    setTranslator([mark](std::string_view text) { return *mark + std::string(text); });
  };
  setMark(0);
  std::atomic<bool> done = false;
  std::thread replacing([&] {
    for (int i = 0; !done; ++i) setMark(i);
  });
  const auto useIt = [] {
    for (int i = 0; i < 2000; ++i) {
      const std::string text = localized("text");
      ASSERT_EQ(text, std::string(100, text.front()) + "text");
    }
  };
  std::thread other(useIt);
  useIt();
  other.join();
  done = true;
  replacing.join();
  setTranslator(nullptr);
  EXPECT_EQ(localized("text"), "text");
}

TEST(Localization, TheDefaultReadsTheCatalogueOfTheCurrentLocale) {
  if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) GTEST_SKIP() << "no locale C.UTF-8";
  unsetenv("LANGUAGE");  // it overrides the locale
  const auto root = std::filesystem::path(testing::TempDir()) / ("meridian-test-" + std::to_string(getpid()));
  const auto directory = root / "C.UTF-8/LC_MESSAGES";
  std::filesystem::create_directories(directory);
  std::ofstream(root / "meridian.po") << R"po(
msgid ""
msgstr "Content-Type: text/plain; charset=UTF-8\n"
msgid "HD (1280 x 720)"
msgstr "HD – 1280 × 720"
msgid "Half Step"
msgstr "Halbe Rate"
msgid "Custom Scale"
msgstr "Eigene Größe"
msgid "Canon"
msgstr "キヤノン"
)po";
  const test::Outcome compiled =
      test::run({"msgfmt", "--check", "-o", (directory / "meridian.mo").string(), (root / "meridian.po").string()});
  ASSERT_EQ(compiled.status, 0) << compiled.errors;
  bindtextdomain("meridian", root.c_str());

  EXPECT_EQ(VideoDimension::sevenTwentyP.localizedString(), "HD \u2013 1280 \u00d7 720");
  EXPECT_EQ(VideoDimension::sevenTwentyP.description(), "HD (1280 x 720)");
  EXPECT_EQ(VideoDimension::scaled(0.9).localizedPickerString(), "Eigene Gr\u00f6\u00dfe");
  EXPECT_EQ(VideoDimension::scaled(0.9).localizedString(), "Custom: 90.0%");
  EXPECT_EQ(FrameRate::halfstep.localizedString(), "Halbe Rate");
  EXPECT_EQ(localizedString(MediaCorporation::canon), "\u30ad\u30e4\u30ce\u30f3");
  EXPECT_EQ(localizedString(MediaCorporation::sony), "Sony");

  constexpr std::string_view withNul("Half Step\0!", 11);
  EXPECT_EQ(localized(withNul.substr(0, 9)), "Halbe Rate");
  EXPECT_EQ(localized(withNul), withNul);
  EXPECT_EQ(localized(""), "");
  std::setlocale(LC_ALL, "C");
  std::filesystem::remove_all(root);
}

}  // namespace
}  // namespace meridian
