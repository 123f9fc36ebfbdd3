#include "meridian/suite/localization.h"

#include <gtest/gtest.h>
#include <libintl.h>
#include <unistd.h>

#include <atomic>
#include <clocale>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>
#include <vector>

namespace meridian {
namespace {

TEST(Localization, TranslatorMayBeReplacedWhileOthersUseIt) {
  EXPECT_EQ(localized("text"), "text");
  // Each translator owns its mark, so that the use of one that is gone shows.
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

TEST(Localization, DefaultReadsTheCatalogueOfTheLanguageInUse) {
  if (std::setlocale(LC_ALL, "C.UTF-8") == nullptr) GTEST_SKIP() << "no locale C.UTF-8";
  // A catalogue as the C library reads it, of a header and one text.
  std::vector<std::uint32_t> head{0x950412de, 0, 2, 28, 44, 0, 0};
  std::string body;
  for (const std::string text : {"", "Frame rate", "Content-Type: text/plain; charset=UTF-8\n", "Bildrate \u00fc"}) {
    head.insert(head.end(), {static_cast<std::uint32_t>(text.size()), static_cast<std::uint32_t>(60 + body.size())});
    body += text + '\0';
  }
  const auto root = std::filesystem::path(testing::TempDir()) / ("meridian-test-" + std::to_string(getpid()));
  std::filesystem::create_directories(root / "C.UTF-8/LC_MESSAGES");
  std::ofstream file(root / "C.UTF-8/LC_MESSAGES/meridian.mo", std::ios::binary);
  file.write(reinterpret_cast<const char*>(head.data()), 60) << body << std::flush;
  bindtextdomain("meridian", root.c_str());

  constexpr std::string_view withNul("Frame rate\0!", 12);
  EXPECT_EQ(localized(withNul.substr(0, 10)), "Bildrate \u00fc");
  EXPECT_EQ(localized(withNul), withNul);
  EXPECT_EQ(localized("Frame rat"), "Frame rat");
  EXPECT_EQ(localized(""), "");
  std::setlocale(LC_ALL, "C");
  std::filesystem::remove_all(root);
}

}  // namespace
}  // namespace meridian
