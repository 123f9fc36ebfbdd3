#include "meridian/platform/url.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <unordered_set>

namespace meridian {
namespace {

using testing::ElementsAre;

TEST(Url, SplitsPathsIntoComponents) {
  const struct {
    std::string_view path, last, extension, directory, withoutExtension, standardized;
  } cases[] = {
      {"/card/clip.mov", "clip.mov", "mov", "/card", "/card/clip", "/card/clip.mov"},
      {"/card//clip.mov//", "clip.mov", "mov", "/card", "/card//clip//", "/card/clip.mov"},
      {"//card", "card", "", "/", "//card", "/card"},
      {"/clip.tar.gz", "clip.tar.gz", "gz", "/", "/clip.tar", "/clip.tar.gz"},
      {"clip.mov", "clip.mov", "mov", ".", "clip", "clip.mov"},
      {"a/clip.mov", "clip.mov", "mov", "a", "a/clip", "a/clip.mov"},
      {"/", "", "", "/", "/", "/"},
      {"///", "", "", "/", "///", "/"},
      {"", "", "", ".", "", ""},
      {".", ".", "", ".", ".", "."},
      {"..", "..", "", ".", "..", ".."},
      {"/a/..", "..", "", "/a", "/a/..", "/"},
      {"/../../a", "a", "", "/../..", "/../../a", "/a"},
      {"../a/./../../b", "b", "", "../a/./../..", "../a/./../../b", "../../b"},
      {"a/..", "..", "", "a", "a/..", "."},
      {"/a.b/c", "c", "", "/a.b", "/a.b/c", "/a.b/c"},
      {"/.mov", ".mov", "", "/", "/.mov", "/.mov"},
      {"/clip.", "clip.", "", "/", "/clip.", "/clip."},
      {"/clip..mov", "clip..mov", "mov", "/", "/clip.", "/clip..mov"},
      {"/a%20b.m%2Fv", "a%20b.m%2Fv", "m%2Fv", "/", "/a%20b", "/a%20b.m%2Fv"},
      {"/\xff\n.\xfe", "\xff\n.\xfe", "\xfe", "/", "/\xff\n", "/\xff\n.\xfe"},
  };
  for (const auto& [path, last, extension, directory, withoutExtension, standardized] : cases) {
    const Url url = Url::fromFilePath(std::string(path));
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(url.scheme(), "file");
    EXPECT_EQ(url.lastPathComponent(), last) << path;
    EXPECT_EQ(url.pathExtension(), extension) << path;
    EXPECT_EQ(url.deletingLastPathComponent().path(), directory) << path;
    EXPECT_EQ(url.deletingPathExtension().path(), withoutExtension) << path;
    EXPECT_EQ(url.standardized().path(), standardized) << path;
  }
  EXPECT_THAT(Url::fromFilePath("//card/./clip.mov/").pathComponents(), ElementsAre("/", "card", ".", "clip.mov"));
  EXPECT_THAT(Url::fromFilePath("../a").pathComponents(), ElementsAre("..", "a"));
  EXPECT_THAT(Url::fromFilePath("").pathComponents(), ElementsAre());
  EXPECT_THAT(Url::fromFilePath("/").pathComponents(), ElementsAre("/"));
}

TEST(Url, AppendsComponentsAfterOneSeparator) {
  const struct {
    std::string_view path, component, joined;
  } cases[] = {
      {"/card", "clip.mov", "/card/clip.mov"},
      {"/card/", "/clip.mov", "/card/clip.mov"},
      {"/", "clip.mov", "/clip.mov"},
      {".", "clip.mov", "./clip.mov"},
      {"", "clip.mov", "clip.mov"},
      {"", "/clip.mov", "clip.mov"},
      {"/card", "", "/card"},
      {"/card", "/", "/card"},
      {"/card", "100%.mov", "/card/100%.mov"},
      {"/card", "a/b/", "/card/a/b/"},
  };
  for (const auto& [path, component, joined] : cases) {
    EXPECT_EQ(Url::fromFilePath(std::string(path)).appendingPathComponent(component).path(), joined);
  }
}

std::string randomText(std::mt19937& random, std::string_view characters, std::size_t longest) {
  std::string text(random() % (longest + 1), '\0');
  for (char& c : text) c = characters[random() % characters.size()];
  return text;
}

TEST(Url, APathEqualsItsPartsJoined) {
  std::mt19937 random(5);
  for (int round = 0; round < 20000; ++round) {
    const Url url = Url::fromFilePath(randomText(random, "/.ab", 9));
    const std::string name(url.lastPathComponent());
    if (!name.empty()) {
      // Deleting the last component and appending it again names the same item.
      const Url again = url.deletingLastPathComponent().appendingPathComponent(name);
      EXPECT_EQ(again.lastPathComponent(), name);
      EXPECT_EQ(again.standardized(), url.standardized()) << url.path();
    }
    if (!url.pathExtension().empty()) {
      const std::string base(url.deletingPathExtension().lastPathComponent());
      EXPECT_EQ(base + "." + std::string(url.pathExtension()), name) << url.path();
    }
    const Url standardized = url.standardized();
    EXPECT_EQ(standardized.standardized(), standardized) << url.path();
    EXPECT_EQ(standardized.path().starts_with('/'), url.path().starts_with('/'));
    EXPECT_EQ(standardized.path().find("//"), std::string::npos);
  }
}

TEST(Url, ParsesTextByRfc3986) {
  const auto url = Url::fromText("HTTPS://me:p%40@[::1]:8080/a%20b/100%25.mov?x=/1#t=2");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->scheme(), "HTTPS");
  EXPECT_EQ(url->path(), "/a b/100%.mov");
  EXPECT_EQ(url->pathExtension(), "mov");
  EXPECT_EQ(url->text(), "HTTPS://me:p%40@[::1]:8080/a%20b/100%25.mov?x=/1#t=2");
  EXPECT_EQ(url->deletingLastPathComponent().appendingPathComponent("c?d").text(),
            "HTTPS://me:p%40@[::1]:8080/a%20b/c%3Fd?x=/1#t=2");
  EXPECT_NE(*url, *Url::fromText("https://me:p%40@[::1]:8080/a%20b/100%25.mov?x=/1#t=2"));
  EXPECT_NE(*url, Url::fromFilePath(url->path()));

  const auto host = Url::fromText("http://host");
  EXPECT_EQ(host->path(), "");
  EXPECT_EQ(host->appendingPathComponent("a").text(), "http://host/a");
  EXPECT_EQ(host->deletingLastPathComponent().text(), "http://host/");

  const std::pair<std::string_view, std::string_view> files[] = {
      {"file:///a%20b", "/a b"}, {"file://localhost/a", "/a"},  {"file:/a", "/a"}, {"file:clip%3A.mov", "clip:.mov"},
      {"file:////a", "//a"},     {"file:///%FF%0a", "/\xff\n"}, {"file:", ""},
  };
  for (const auto& [text, path] : files) EXPECT_EQ(Url::fromText(text), Url::fromFilePath(std::string(path))) << text;
  for (const std::string_view text : {"FILE:///a", "file://server/a", "file:///a?x", "mailto:a@b", "x:/%2Fa",
                                      "https://[::1]:8080/a", "https://[::1]/a", "https://[::1]:/a"}) {
    ASSERT_TRUE(Url::fromText(text)) << text;
    EXPECT_EQ(Url::fromText(text)->text(), text);
  }

  for (const std::string_view text : {"",
                                      "/a/b",
                                      "clip.mov",
                                      "a/b:c",
                                      ":x",
                                      "1http://h/",
                                      "ht_tp://h/",
                                      "http://h/a b",
                                      "http://h/\xc3\xa9",
                                      "http://h/100%",
                                      "http://h/%2",
                                      "http://h/%+1",
                                      "http://h:80x/",
                                      "http://h:x/",
                                      "http://[<]/",
                                      "http://h[1]/",
                                      "http://[::1/",
                                      "http://[::1]8080/",
                                      "http://[::1]:80x/",
                                      "http://a@b@c/",
                                      "http://h/[",
                                      "http://h/?a b",
                                      "http://h/#a#b",
                                      "clip: take 2.mov",
                                      "C:\\clip.mov"}) {
    EXPECT_FALSE(Url::fromText(text)) << text;
  }
}

TEST(Url, RoundTripsThroughItsText) {
  std::mt19937 random(7);
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  const std::string characters = bytes + "////%%%%%25:@?#";
  std::unordered_set<Url> urls;
  for (int round = 0; round < 5000; ++round) {
    const Url file = Url::fromFilePath(randomText(random, characters, 12));
    EXPECT_EQ(Url::fromText(file.text()), file) << file.text();
    for (const std::string_view text : {"https://host:1", "https://host/a?q#f", "x:a/b", "x:/a", "file://server/"}) {
      Url remote = *Url::fromText(text);
      const std::string name = randomText(random, characters, 6);
      for (const Url& url : {remote.appendingPathComponent(name), remote.appendingPathComponent(name).standardized(),
                             remote.appendingPathComponent(name).deletingPathExtension(),
                             remote.appendingPathComponent(name).deletingLastPathComponent()}) {
        EXPECT_EQ(Url::fromText(url.text()), url) << url.text();
      }
    }
    urls.insert(file);
    EXPECT_TRUE(urls.contains(*Url::fromText(file.text())));
  }
}

}  // namespace
}  // namespace meridian
