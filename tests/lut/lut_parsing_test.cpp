#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <random>
#include <span>
#include <sstream>

#include "meridian/lut/lut_description.h"
#include "meridian/lut/text_lut_reading.h"
#include "tests/lut/lut_files.h"

namespace meridian {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The text of this many rows; each number runs from 0 to `largest`.
std::string rowsText(std::size_t count, double largest, bool integers = false) {
  std::ostringstream text;
  for (std::size_t i = 0; i < count; ++i) {
    const double value = count == 1 ? largest : largest * static_cast<double>(i) / static_cast<double>(count - 1);
    const double number = integers ? std::floor(value) : value;
    text << number << ' ' << number << ' ' << number << '\n';
  }
  return text.str();
}

class LutParsing : public testing::Test {
 protected:
  Expected<std::unique_ptr<const ParsedLutFile>, LutError> parse(const std::string& name, std::string_view content) {
    path_ = directory_.write(name, content);
    return ParsedLutFactory::parsing(Url::fromFilePath(path_));
  }
  [[nodiscard]] const std::vector<std::string>& logged() const { return log_.messages(); }

  test::TemporaryDirectory directory_;
  test::LogKeeper log_;
  std::string path_;
};

TEST_F(LutParsing, HeadersRowsAndValuesDecideWhatAFileIs) {
  using Code = LutErrorCode;
  struct Case {
    std::string what;
    std::string text;
    std::string className;  // empty if the file is not a LUT
    std::int64_t depth = 0;
    Code error = Code::noRows;
  };
  const std::string cubeRows = rowsText(17 * 17 * 17, 1);
  const std::string one = "ParsedOneDimensionLutFile";
  const std::string integers = "ParsedThreeDimensionalIntegerFile";
  const std::string floats = "ParsedThreeDimensionalFloatingPointFile";
  const Case cases[] = {
      {"cube by count", cubeRows, floats},
      {"header, title, domain", "TITLE \"look\"\nLUT_3D_SIZE 33\nDOMAIN_MIN 0 0 0\n" + rowsText(35937, 1), floats},
      {"maximum 1023", "LUT_3D_SIZE 17\n" + rowsText(4913, 1023, true), integers, 10},
      {"maximum 4095", rowsText(4913, 4095, true), integers, 12},
      {"maximum 65535", rowsText(4913, 65535, true), integers, 16},
      {"maximum 1024, a power of two, has its own exponent", rowsText(4913, 1024, true), integers, 10},
      {"maximum 1 is floating point", rowsText(4913, 1, true), floats},
      {"maximum 2", rowsText(4913, 2, true), integers, 1},
      {"maximum 2.5", rowsText(4913, 2.5), floats},
      {"a maximum that a float makes whole", rowsText(4912, 1) + "0 0 1022.99999\n", integers, 10},
      {"another of 16 bits", rowsText(4912, 1) + "0 0 65534.999\n", integers, 16},
      {"one whose integer is 1", rowsText(4912, 1) + "0 0 1.99999999999999999999\n", integers, 0},
      {"one that a float nearly makes whole", rowsText(4912, 1) + "0 0 1022.9999\n", floats},
      {"one that a float makes 1", rowsText(4912, 1) + "0 0 1.00000001\n", floats},
      {"a maximum beyond 64 bits", rowsText(4912, 1) + "0 0 1e30\n", floats},
      {"a maximum beyond doubles is not a number", rowsText(4913, 1) + "0 0 1e400\n", floats},
      {"all negative", "LUT_3D_SIZE 2\n-1 -1 -1\n-3 -2 -1\n", floats},
      {"256 rows", rowsText(256, 1), one},
      {"1024 code values", rowsText(1024, 1023, true), one},
      {"a declared 1D LUT", "LUT_1D_SIZE 256\n" + rowsText(256, 1), one},
      {"a 1D LUT by its title", "# A 1d table\n" + rowsText(256, 1), one},
      {"3d wins over 1d", "# from 1D to 3D\n" + rowsText(256, 1), floats},
      {"a later header wins over a title", "# 3D\nlut_1d_size 256\n" + rowsText(256, 1), one},
      {"a header after rows is ignored", rowsText(256, 1) + "LUT_3D_SIZE 6\n", one},
      {"a range line decides nothing, though it says 3D", "LUT_3D_INPUT_RANGE 0 1\n" + rowsText(256, 1), one},
      {"a cube of a row count that is not a cube", "LUT_3D_SIZE 5\n" + rowsText(100, 1), floats},
      {"empty", "", "", 0, Code::noRows},
      {"no row", "LUT_3D_SIZE 2\n1 2\n1 2 3 4\nx y z\n1,0 2 3\n", "", 0, Code::noRows},
      {"1000 rows", rowsText(1000, 1), "", 0, Code::unknownDimensions},
      {"300 rows", rowsText(300, 1), "", 0, Code::unknownDimensions},
      {"300 declared rows", "LUT_1D_SIZE 300\n" + rowsText(300, 1), "", 0, Code::unusableRowCount},
      {"binary", std::string("\0\x01\xff\xfe 1 2 3\0", 12), "", 0, Code::noRows},
      {"UTF-16",
       std::string("\xff\xfe"
                   "0\0 \0000\0 \0000\0\n\0",
                   14),
       "", 0, Code::noRows},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    const auto file = parse("look.cube", each.text);
    if (each.className.empty()) {
      ASSERT_FALSE(file);
      EXPECT_EQ(file.error().code, each.error);
      EXPECT_EQ(file.error().place, path_);
      continue;
    }
    ASSERT_TRUE(file) << file.error().message();
    EXPECT_EQ((*file)->className(), each.className);
    EXPECT_EQ((*file)->file().path(), path_);
    EXPECT_EQ((*file)->fileMarkup(), LutMarkupType::txt);
    EXPECT_EQ((*file)->dimensions(), each.className == one ? LutDimensions::oneD : LutDimensions::cube);
    const LutDescription description = describe(**file);
    EXPECT_EQ(description.dimensions, (*file)->dimensions());
    EXPECT_EQ(description.rows, (*file)->orderedValues().size());
    if (each.className != one) {
      EXPECT_EQ(description.valueBitDepth.value_or(0), each.depth);
    }
  }
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(LutParsing, OnlyThreeErrorsAreLoggedInTheirWords) {
  const std::string missing = (directory_.path() / "missing.cube").string();
  EXPECT_EQ(ParsedLutFactory::parsed(Url::fromFilePath(missing)), nullptr);
  EXPECT_EQ(parse("short.lut", rowsText(128, 1)).error().code, LutErrorCode::tooFewRows);
  const std::string shortPath = path_;
  EXPECT_EQ(parse("clip.mov", rowsText(256, 1)).error().code, LutErrorCode::unsupportedExtension);
  EXPECT_THAT(logged(), ElementsAre("error MRD_CLUT_PTFB-Failed to open lut file " + missing,
                                    "error MRD_PLF_PLWV-Lut file " + shortPath +
                                        " only containts 128 entries.  Considered not a LUT",
                                    "info MRD_PLF_PLWV-Lut file " + path_ + " is not a supported format"));
}

TEST_F(LutParsing, ExtensionsArePermittedByTheirMeaning) {
  const std::string rows = rowsText(256, 1);
  for (const std::string name : {"a.cube", "a.CUBE", "a.txt", "a.3dl", "a.mylook"}) {
    EXPECT_TRUE(parse(name, rows)) << name;
  }
  // No extension is that of a directory, which the vocabulary knows.
  for (const std::string name : {"a.mov", "a.MOV", "plain", "a."}) EXPECT_FALSE(parse(name, rows)) << name;
  const Url mov = Url::fromFilePath(directory_.write("b.mov", rows));
  const Url look = Url::fromFilePath(directory_.write("b.mylook", rows));
  EXPECT_TRUE(ParsedLutFactory::parsing(mov, std::nullopt));
  EXPECT_FALSE(ParsedLutFactory::parsing(look, FileExtensionSet::colorLutFileExtensions(), false));
}

TEST_F(LutParsing, AFileThatCannotBeReadIsAnErrorThatSaysWhy) {
  const auto codeOf = [](const std::string& path) {
    return ParsedLutFactory::parsing(Url::fromFilePath(path)).error().code;
  };
  const std::string table = directory_.write("table.cube", rowsText(256, 1));
  EXPECT_EQ(codeOf(table + std::string("\0.cube", 6)), LutErrorCode::notOpened);
  if (geteuid() != 0) {
    std::filesystem::permissions(table, std::filesystem::perms::none);
    const auto file = ParsedLutFactory::parsing(Url::fromFilePath(table));
    EXPECT_EQ(file.error().systemError, std::errc::permission_denied);
  }
}

TEST_F(LutParsing, OnlyARegularFileIsReadAndNothingIsWaitedFor) {
  const auto pathTo = [this](const char* name) { return directory_.path() / name; };
  std::filesystem::create_directory(pathTo("folder.cube"));
  ASSERT_EQ(::mkfifo(pathTo("fifo.cube").c_str(), 0600), 0);
  std::filesystem::create_symlink(pathTo("fifo.cube"), pathTo("link to fifo.cube"));
  std::filesystem::create_symlink("/dev/zero", pathTo("zero.cube"));
  std::filesystem::create_symlink("/dev/full", pathTo("full.mylook"));
  sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
  const std::string socketPath = pathTo("socket.cube").string();
  ASSERT_LT(socketPath.size(), sizeof(address.sun_path));
  socketPath.copy(address.sun_path, socketPath.size());
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  ASSERT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
  for (const auto& [name, kind] : {std::pair{"folder.cube", "a directory"},
                                   {"fifo.cube", "a FIFO"},
                                   {"link to fifo.cube", "a FIFO"},
                                   {"zero.cube", "a device"},
                                   {"full.mylook", "a device"},
                                   {"socket.cube", "a socket"}}) {
    const auto file = ParsedLutFactory::parsing(Url::fromFilePath(pathTo(name).string()));
    EXPECT_EQ(file.error().code, LutErrorCode::notRegularFile) << name;
    EXPECT_EQ(file.error().detail, kind) << name;
  }
  ::close(socket);
  EXPECT_THAT(logged(), testing::Each(testing::StartsWith("error MRD_CLUT_PTFB-Failed to open lut file ")));
  std::filesystem::create_symlink(directory_.write("table.cube", rowsText(256, 1)), pathTo("link.cube"));
  EXPECT_TRUE(ParsedLutFactory::parsing(Url::fromFilePath(pathTo("link.cube").string())));
}

TEST_F(LutParsing, WellFormedXmlIsAnErrorWhateverItsExtension) {
  std::string laughs = "<!DOCTYPE l [<!ENTITY a \"ha\">";
  for (char name = 'b'; name < 'z'; ++name) {
    laughs += std::string("<!ENTITY ") + name + " \"";
    for (int i = 0; i < 10; ++i) laughs += std::string("&") + static_cast<char>(name - 1) + ";";
    laughs += "\">";
  }
  laughs += "]><l>&y;</l>";
  std::string wide;
  for (const char c : std::string("<l>1 2 3</l>")) wide += std::string(1, c) + '\0';
  const std::string documents[] = {
      "<a/>",
      " \n\t<a>" + rowsText(256, 1) + "</a>",
      "\xef\xbb\xbf<?xml version='1.0'?><a/>",
      "\xff\xfe" + wide,
      "<?xml version='1.0' encoding='windows-1252'?><a>\xe9</a>",
      "<!DOCTYPE a SYSTEM 'http://127.0.0.1:9/none.dtd'><a/>",
      "<!DOCTYPE a [<!ENTITY e SYSTEM '/dev/zero'>]><a>&e;</a>",
      "<a>" + std::string(3'000'000, 'x') + "</a>",
      laughs,
  };
  for (const std::string& document : documents) {
    SCOPED_TRACE(document.substr(0, 60));
    for (const std::string name : {"a.xml", "a.cube", "a.mov"}) {
      EXPECT_EQ(parse(name, document).error().code, LutErrorCode::xmlDocument);
    }
  }
  EXPECT_THAT(logged(), IsEmpty());
  // What only begins like a document is read as text.
  EXPECT_TRUE(parse("a.cube", "<a>\n" + rowsText(256, 1)));
  EXPECT_TRUE(parse("a.cube", "  \n" + rowsText(256, 1)));
}

TEST_F(LutParsing, HostileXmlNeedsLittleMemory) {
  const auto peak = [] {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;  // in KiB
  };
  std::string nested;
  std::string names;
  for (int i = 0; i < 2'000'000; ++i) nested += "<a>";
  for (int i = 0; i < 1'000'000; ++i) names += "<n" + std::to_string(i) + "/>";
  const std::string hostile[] = {"<a b='" + std::string(60'000'000, 'x'), std::move(nested), "<a>" + names};
  for (const std::string& text : hostile) {
    directory_.write("hostile.cube", text);
    const auto before = peak();
    EXPECT_FALSE(parse("hostile.cube", text));
    EXPECT_LT(peak() - before, 64 * 1024);
  }
}

/// Returns the rows of a text that is held whole and split at newlines.
std::vector<LutColor> plainlyRead(std::string_view text) {
  GenericTextLutInterpreter lines;
  if (text.starts_with("\xef\xbb\xbf")) text.remove_prefix(3);
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    lines.interpret(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  const auto colors = lines.triplets().colors();
  return {colors.begin(), colors.end()};
}

TEST_F(LutParsing, ReadingInPiecesGivesTheRowsOfTheWholeText) {
  std::mt19937 random(5);
  const auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  const std::vector<std::string> numbers{"0",
                                         "1",
                                         "-0.5",
                                         "+.25",
                                         "5.",
                                         "1e-3",
                                         "2E+2",
                                         "0.123456",
                                         "0.1234567890123456789",
                                         "1023",
                                         "1e400",
                                         "0x10",
                                         "nan",
                                         "1_0",
                                         "",
                                         "12345678.87654321",
                                         "9007199254740993",
                                         "1.7976931348623157e308"};
  const std::vector<std::string> separators{" ", " ", " ", " ", "\t", "  ", "\xc2\xa0", "\x0b", ","};
  const std::vector<std::string> ends{"\n", "\n", "\r\n", "\r", " \n", "\t\r\n", "\n\n", "\n \n"};
  for (int round = 0; round < 20; ++round) {
    std::string text = round % 3 == 0 ? "\xef\xbb\xbf" : "";
    text += "LUT_3D_SIZE 33" + ends[static_cast<std::size_t>(pick(8))];
    while (text.size() < 600'000) {
      if (pick(2000) == 0) text += std::string(static_cast<std::size_t>(pick(300'000)), pick(2) == 0 ? ' ' : 'x');
      if (pick(8) == 0) text += separators[static_cast<std::size_t>(pick(9))];
      for (int piece = pick(20) == 0 ? pick(5) : 3; piece > 0; --piece) {
        text += numbers[static_cast<std::size_t>(pick(pick(4) == 0 ? 18 : 8))];
        if (piece > 1) text += separators[static_cast<std::size_t>(pick(pick(4) == 0 ? 9 : 5))];
      }
      text += ends[static_cast<std::size_t>(pick(8))];
    }
    if (round % 2 == 0) text += "0.5 0.5 0.5";  // no newline at the end
    const auto file = parse("look.cube", text);
    ASSERT_TRUE(file);
    const auto colors = (*file)->orderedValues().colors();
    const std::vector<LutColor> expected = plainlyRead(text);
    ASSERT_EQ(colors.size(), expected.size());
    ASSERT_TRUE(std::ranges::equal(colors, expected)) << "round " << round;
  }
}

TEST(TextLutReading, RowsAreCopiedAFewTimesHoweverManyTheyAre) {
  const std::string shortRow = "0 0 0\n";
  const std::string longRow = "0.123456 0.123456 0.123456\n";
  constexpr std::size_t count = 3 << 20;
  for (const bool beginsLong : {false, true}) {
    std::size_t given = 0;  // rows; the first eighth is long, so that the estimate of their number is too low
    std::string text;
    GenericTextLutInterpreter lines;
    std::size_t copies = 0;
    std::size_t room = 0;
    const auto source = [&](std::span<char> memory) {
      if (lines.triplets().capacity() != room) ++copies;
      room = lines.triplets().capacity();
      EXPECT_LE(room, std::max<std::size_t>(1 << 20, 2 * lines.triplets().size()));
      for (; text.size() < memory.size() && given < count; ++given) {
        text += beginsLong && given < count / 8 ? longRow : shortRow;
      }
      const std::size_t filled = std::min(text.size(), memory.size());
      std::copy_n(text.begin(), filled, memory.begin());
      text.erase(0, filled);
      return filled;
    };
    const std::size_t size =
        beginsLong ? count / 8 * longRow.size() + (count - count / 8) * shortRow.size() : count * shortRow.size();
    detail::readTextLut(source, size, lines, {.chunk = 1 << 14});
    EXPECT_EQ(lines.triplets().size(), count);
    EXPECT_LE(copies, 14U);
  }
}

TEST_F(LutParsing, OverlongLinesCountForTheirKeywords) {
  const std::string rows = rowsText(256, 1);
  const std::string blanks(2'500'000, ' ');
  const std::string letters(2'500'000, 'x');
  struct Case {
    std::string text;
    LutDimensions dimensions;
    std::size_t rows;
  };
  const Case cases[] = {
      {letters + "LUT_3D_SIZE" + letters + "\n" + rows, LutDimensions::cube, 256},
      {letters + "1d" + letters + "3D" + letters + "\n" + rows, LutDimensions::cube, 256},
      {letters + "\n" + rows, LutDimensions::oneD, 256},
      {"LUT_1D_SIZE\n" + rows + letters + "LUT_3D_SIZE\n" + rows, LutDimensions::oneD, 512},
      {"LUT_3D_SIZE\n" + blanks + "1 2 3" + blanks + "\n", LutDimensions::cube, 1},
      {"LUT_3D_SIZE\n1 2" + blanks + "3\n4 5 6\n", LutDimensions::cube, 1},
      // More digits than a line may have.
      {"LUT_3D_SIZE\n1 2 3." + std::string(2'500'000, '0') + "\n4 5 6\n", LutDimensions::cube, 1},
  };
  for (const Case& each : cases) {
    const auto file = parse("look.cube", each.text);
    ASSERT_TRUE(file);
    EXPECT_EQ((*file)->dimensions(), each.dimensions);
    EXPECT_EQ((*file)->orderedValues().size(), each.rows);
  }
}

TEST_F(LutParsing, AKeywordAcrossTwoPiecesOfAnOverlongLineIsFound) {
  // The file is read in pieces of 256 KiB; a line counts as overlong from its fourth piece on.
  const std::string rows = rowsText(256, 1);
  const std::string keyword = "LUT_3D_SIZE";
  for (const std::size_t cut : {1'048'576U, 1'310'720U}) {
    for (const std::size_t before : {1U, 5U, 10U}) {
      std::string line(1'500'000, 'x');
      line.replace(cut - before, keyword.size(), keyword);
      EXPECT_EQ((*parse("look.cube", line + "\n" + rows))->dimensions(), LutDimensions::cube) << before;
    }
  }
}

TEST(TextLutInterpreter, TheSizeComesFromTheRowsOrElseFromTheLargestValue) {
  const auto sizeOf = [](std::size_t rows, const std::string& row) {
    GenericTextLutInterpreter lines;
    for (std::size_t i = 0; i < rows; ++i) lines.interpret(row);
    return lines.lutSize();
  };
  for (const std::uint64_t face : {17U, 33U, 65U}) EXPECT_EQ(sizeOf(face * face * face, "0 0 1023"), face);
  for (const std::size_t rows : {1U, 2U, 256U, 4096U}) EXPECT_EQ(sizeOf(rows, "0 0 5000"), rows);
  EXPECT_EQ(sizeOf(300, "0 1000 5"), 1024U);
  EXPECT_EQ(sizeOf(300, "0 1024.9 5"), 1024U);
  EXPECT_EQ(sizeOf(300, "0 1025 5"), 2048U);
  EXPECT_EQ(sizeOf(300, "1 0 0"), 1U);
  EXPECT_EQ(sizeOf(300, "0.9 0 0"), std::nullopt);
  EXPECT_EQ(sizeOf(300, "-5 -7 -9"), std::nullopt);
  EXPECT_EQ(sizeOf(0, ""), std::nullopt);
  // The text before the keyword is not a number, so a declared size is never found.
  GenericTextLutInterpreter lines;
  lines.interpret("LUT_3D_SIZE 33");
  lines.interpret("LUT_1D_SIZE 64");
  EXPECT_EQ(lines.explicitLutSize(), std::nullopt);
  lines.interpret("0 0 7");
  EXPECT_EQ(lines.lutSize(), 1U);
}

TEST_F(LutParsing, DeclaredDomainsDoNotAffectTheConverter) {
  const std::string rows = rowsText(4913, 1);
  const LutDeclaredDomain none;
  const LutDeclaredDomain wide{{-1, 0, 0.5}, {2, 3, 4}, true};
  const LutDeclaredDomain range{{0.25, 0.25, 0.25}, {8, 8, 8}, true};
  const std::pair<std::string, LutDeclaredDomain> cases[] = {
      {rows, none},
      {"DOMAIN_MIN -1 0 0.5\nDOMAIN_MAX 2 3 4\n" + rows, wide},
      {"domain_min -1 0 0.5\r\ndomain_max\t2 3 4 \n" + rows, wide},
      {"LUT_3D_INPUT_RANGE 0.25 8\n" + rows, range},
      {"DOMAIN_MIN 0 0 0\nDOMAIN_MAX 0 0 0\n" + rows, none},  // no range at all
      {"DOMAIN_MIN 2 0 0\nDOMAIN_MAX 1 1 1\n" + rows, none},  // one channel inverted: red,
      {"DOMAIN_MIN 0 2 0\nDOMAIN_MAX 1 1 1\n" + rows, none},  // green,
      {"DOMAIN_MIN 0 0 2\nDOMAIN_MAX 1 1 1\n" + rows, none},  // blue
      {"DOMAIN_MIN 1 0 0\nDOMAIN_MAX 1 1 1\n" + rows, none},  // one channel empty: red,
      {"DOMAIN_MIN 0 1 0\nDOMAIN_MAX 1 1 1\n" + rows, none},  // green,
      {"DOMAIN_MIN 0 0 1\nDOMAIN_MAX 1 1 1\n" + rows, none},  // blue
      {"DOMAIN_MAX 2 3\nDOMAIN_MINIMUM 1 1 1\n" + rows, none},
      {rows + "DOMAIN_MAX 2 3 4\n", none},
  };
  for (const auto& [text, domain] : cases) {
    const auto file = parse("look.cube", text);
    ASSERT_TRUE(file);
    EXPECT_EQ((*file)->declaredDomain(), domain) << text.substr(0, 40);
    EXPECT_EQ((*file)->inputConverter().highValue(), 1);
  }
}

TEST_F(LutParsing, NumbersOfRowsAreCorrectlyRounded) {
  // From a file, where short numbers are read by the fast path.
  std::mt19937_64 random(7);
  const auto pick = [&](int count) { return std::uniform_int_distribution<int>(0, count - 1)(random); };
  std::vector<std::string> numbers;
  std::string text = "LUT_3D_SIZE\n";
  for (int i = 0; i < 60'000; ++i) {
    std::string number = pick(4) == 0 ? "-" : pick(8) == 0 ? "+" : "";
    const int before = pick(12);
    const int after = before == 0 ? 1 + pick(19) : pick(20);
    for (int k = 0; k < before; ++k) number += static_cast<char>('0' + pick(10));
    if (after > 0 || pick(2) == 0) number += '.';
    for (int k = 0; k < after; ++k) number += static_cast<char>('0' + pick(10));
    if (pick(10) == 0) number += "e" + std::to_string(pick(40) - 20);
    numbers.push_back(number);
    text += number + (i % 3 == 2 ? "\n" : " ");
  }
  const auto file = parse("look.cube", text);
  ASSERT_TRUE(file);
  const LutValueTriplets& rows = (*file)->orderedValues();
  ASSERT_EQ(rows.size() * 3, numbers.size());
  std::size_t place = 0;
  for (const LutValueTriplet& row : rows) {
    for (const DecimalNumber& number : {row.first, row.second, row.third}) {
      const std::string& written = numbers[place++];
      ASSERT_EQ(number.doubleValue(), std::strtod(written.c_str(), nullptr)) << written;
      ASSERT_EQ(number, DecimalNumber::fromText(written)) << written;
    }
  }
}

}  // namespace
}  // namespace meridian
