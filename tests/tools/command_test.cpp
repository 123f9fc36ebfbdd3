#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "meridian/cli/transcode_flags.h"
#include "meridian/media/file_extension.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"
#include "tests/support/process.h"
#include "tests/support/temporary_directory.h"

namespace meridian {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using test::Outcome;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Words = std::vector<std::string>;

Words commandOf(const Words& options, const Words& words) {
  Words command{MERIDIAN_COMMAND};
  command.insert(command.end(), options.begin(), options.end());
  command.emplace_back("--");
  command.insert(command.end(), words.begin(), words.end());
  return command;
}

Outcome meridianWith(const Words& options) {
  Words command{MERIDIAN_COMMAND};
  command.insert(command.end(), options.begin(), options.end());
  return test::run(command);
}

Outcome meridianWith(const Words& options, const Words& words) { return test::run(commandOf(options, words)); }

const Words cardWords{"-in_0_1", "/card/B.mov", "-in_0_0", "/card/A clip.mov", "-PRESET", "solvane_cloud",
                      "-dims",   "1920x1080",   "-dims",   "1280x720",         "-vcoedc", "h265",
                      "-web",    "yes",         "stray",   "-overwrite"};

TEST(Command, ParsePrintsTheEncodedFormOfTheStore) {
  for (const Words& words :
       {Words{}, Words(cardWords.begin() + 4, cardWords.end() - 2), Words{"-foo"}, Words{"--", "-", "-h"}}) {
    for (const bool keepOrder : {false, true}) {
      const Words options = keepOrder ? Words{"parse", "--keep-order"} : Words{"parse"};
      const Outcome outcome = meridianWith(options, words);
      EXPECT_EQ(outcome.status, 0);
      EXPECT_THAT(outcome.errors, IsEmpty());
      // Dumped texts, so that the order of the members counts as well.
      EXPECT_EQ(ordered_json::parse(outcome.output).dump(),
                ordered_json(TranscodeCliArguments(words, keepOrder)).dump());
    }
  }
}

TEST(Command, RenderGivesEveryElementInEachForm) {
  const Words words{"-out", "/out/line\nend \xff\xc3.mov", "-overwrite", "-preset", "solvane_4444xq", "-out", "/b"};
  const Words expected = TranscodeCliArguments(words, true).commandLine();
  std::string lines;
  std::string terminated;
  std::string joined;
  for (const std::string& element : expected) {
    lines += element + '\n';
    terminated += element + '\0';
    joined += element;
  }
  EXPECT_EQ(meridianWith({"render", "--keep-order"}, words).output, lines);
  EXPECT_EQ(meridianWith({"render", "--keep-order", "--null"}, words).output, terminated);
  EXPECT_EQ(meridianWith({"render", "--keep-order", "--cli-string"}, words).output, joined + '\n');
  EXPECT_EQ(json::parse(meridianWith({"render", "--keep-order", "--json"}, words).output), json(expected));
}

TEST(Command, WarnsOfBytesThatJsonCannotCarryAndRendersThem) {
  const Words words{"-out", "/out/\xff.mov"};
  for (const Words& options : {Words{"parse"}, Words{"render", "--json"}, Words{"explain", "--json"}}) {
    const Outcome outcome = meridianWith(options, words);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(json::accept(outcome.output));
    EXPECT_THAT(outcome.output, HasSubstr("\xef\xbf\xbd"));
    EXPECT_THAT(outcome.errors, HasSubstr("not valid UTF-8"));
  }
  EXPECT_EQ(meridianWith({"render", "--null"}, words).output, std::string("-out\0/out/\xff.mov\0", 16));
}

TEST(Command, ExplainAccountsForEveryWord) {
  const Outcome outcome = meridianWith({"explain", "--json"}, cardWords);
  ASSERT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.errors, IsEmpty());
  const json document = json::parse(outcome.output);

  std::map<std::string, json> settings;
  for (const json& setting : document["settings"]) settings[setting["flag"]] = setting;
  EXPECT_EQ(settings.size(), TranscodeCliArguments(cardWords).flagValueLookup().size());
  EXPECT_EQ(settings["-dims"]["source"], "repeated");
  EXPECT_EQ(settings["-dims"]["earlierValues"], json({"1920x1080"}));
  EXPECT_EQ(settings["-dims"]["presetValue"], "960x540");
  EXPECT_EQ(settings["-vbr"]["source"], "preset");
  EXPECT_EQ(settings["-in_0_1"]["source"], "given");
  EXPECT_EQ(settings["-web"]["warnings"][0]["code"], "holdsValueButTakesNone");
  EXPECT_THAT(settings["-web"]["warnings"][0]["message"], HasSubstr("consumed the following word"));
  EXPECT_EQ(document["rejected"][0]["suggestion"], "-vcodec");
  EXPECT_EQ(document["rejected"][0]["error"],
            json({{"code", "unknownFlag"},
                  {"message", "\"-vcoedc\": is not a flag of the transcoder; did you mean -vcodec?"}}));
  EXPECT_EQ(document["dropped"], json({{{"index", 14}, {"word", "stray"}}}));
  EXPECT_EQ(document["presets"][0]["name"], "solvane_cloud");
}

TEST(Command, WordsCannotControlTheTerminal) {
  const Words words{"-out", "\x1b]0;owned\x07.mov", "-b\x1b[2Jad", "\n", "stray\x1b", "-preset", "\x1b[31m"};
  for (const Outcome& outcome : {meridianWith({"explain"}, words), meridianWith({"parse", "--strict"}, words)}) {
    EXPECT_THAT(outcome.output + outcome.errors, Not(HasSubstr("\x1b")));
  }
  const Outcome wrong = meridianWith({"extensions", "--group", "\x1b[2J"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.errors, Not(HasSubstr("\x1b")));
}

TEST(Command, ShowsColourOnTerminalsUnlessNoColorIsSet) {
  const Words command = commandOf({"explain"}, cardWords);
  EXPECT_THAT(test::run(command, {{"TERM=xterm"}, {}}).output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(test::runOnTerminal(command, {{"TERM=xterm"}, {}}).output, HasSubstr("\x1b[31m"));
  EXPECT_THAT(test::runOnTerminal(command, {{"TERM=dumb"}, {}}).output, Not(HasSubstr("\x1b")));
  EXPECT_THAT(test::runOnTerminal(command, {{"TERM=xterm", "NO_COLOR=1"}, {}}).output, Not(HasSubstr("\x1b")));
}

TEST(Command, WrongUsageExitsWithTwoAndSaysWhatToDo) {
  const struct {
    Words options;
    std::string says;
  } cases[] = {
      {{"parse"}, "after \"--\", or into a file for --from, for example: meridian parse"},
      {{"parse", "-vcodec", "h264"}, "unexpected arguments: -vcodec h264\nput the argument vector after \"--\""},
      {{"render", "word"}, "after \"--\""},
      {{"render", "--null", "--json", "--"}, "--json and --null cannot be used together"},
      {{"flags", "--", "-x"}, "accepts no words after"},
      {{"extensions", "--group", "videos"}, "unknown group \"videos\"; known groups:\n"},
      {{"rate"}, "VALUE|NUM/DEN is missing"},
      {{"rate", "-inf"}, "unexpected argument: -inf"},
      {{"timecode", "--rate", "25", "--rate", "24"}, "--rate is given more than once"},
      {{"timecode"}, "expected a timecode"},
      {{"dimension", "--", "1920", "1080", "-3"}, "unexpected argument: -3"},
      {{"timecode", "01:00:00:00", "--frames", "5"}, "--frames needs --rate"},
      {{"completion", "tcsh"}, "known shells:\n  bash\n  zsh\n  fish"},
      {{"timecode", "--rate"}, "--rate needs a value: VALUE|NUM/DEN"},
      {{"encode"}, "unknown subcommand \"encode\"; known subcommands:\n  parse\n"},
      {{"transcode", "--resume", "--", "-codecs"}, "--resume is for --jobs"},
      {{"lut", "parse"}, "unknown subcommand \"parse\"; known subcommands:\n  info\n  sample\n"},
      {{"--nonsense"}, "unknown option --nonsense; known options: --help --version\n\"meridian --help\""},
      {{"rate", "--nonsense"}, "unknown option --nonsense; known options: --help --json\n\"meridian rate --help\""},
      {{"prase"}, "unknown subcommand \"prase\"; did you mean parse?"},
      {{"comp"}, "did you mean completion?"},
      {{"apply", "x"}, "unknown subcommand \"apply\"; did you mean lut apply?"},
      {{"lut", "smaple"}, "unknown subcommand \"smaple\"; did you mean sample?"},
      {{"flags", "--jsno"}, "unknown option --jsno; did you mean --json?"},
      {{"flags", "-json"}, "unknown option -json; did you mean --json?"},
      {{"parse", "--keep_order=1", "--"}, "unknown option --keep_order; did you mean --keep-order?"},
      {{"extensions", "--group", "sidecarFileExtension"}, "did you mean sidecarFileExtensions?"},
      {{"completion", "bsh"}, "unknown shell \"bsh\"; did you mean bash?"},
      {{"set", "foo=1"}, "unknown property \"foo\"\n\"meridian set --help\""},
      {{"set", "dims=1x1", "--"}, "unknown property \"dims\"; did you mean videoDimensions?"},
      {{"--"}, "no subcommand is given"},
      {{""}, "--help"},
  };
  for (const auto& [options, says] : cases) {
    const Outcome outcome = meridianWith(options);
    EXPECT_EQ(outcome.status, 2) << testing::PrintToString(options);
    EXPECT_THAT(outcome.output, IsEmpty()) << testing::PrintToString(options);
    EXPECT_THAT(outcome.errors, AllOf(StartsWith("meridian: "), HasSubstr(says))) << testing::PrintToString(options);
  }
}

TEST(Command, AValueThatDoesNotFitExitsWithOneAndOneLine) {
  const struct {
    Words options;
    std::string says;
  } cases[] = {
      {{"rate", "abc"}, "\"abc\" is not a frame rate; expected a number (23.976) or a ratio (24000/1001)"},
      {{"rate", "1/2/3"}, "expected a ratio of two integers"},
      {{"rate", "-5"}, "\"-5\" is not a frame rate: below 0 frames per second"},
      {{"rate", "25/-1"}, "below 0"},
      {{"rate", "0"}, "0 frames per second"},
      {{"rate", "0/5"}, "0 frames per second"},
      {{"rate", "inf"}, "not finite"},
      {{"rate", "nan"}, "not finite"},
      {{"rate", "1e300"}, "too large"},
      {{"rate", "9223372036854775807"}, "too large"},
      {{"rate", "1e-7"}, "too small"},
      {{"rate", "25/0"}, "the denominator is 0"},
      {{"rate", "0/0"}, "the denominator is 0"},
      {{"timecode", "garbage"}, "no number for hours, minutes, seconds, frames; expected"},
      {{"timecode", "garbage", "--rate", "29.97", "--json"}, "\"garbage\": is not a timecode"},
      {{"timecode", "01:00:00.02", "--rate", "29.97"}, "no number for seconds, frames"},
      {{"timecode", "1:2:x:4"}, "no number for seconds"},
      {{"timecode", "1:2:3:4:5"}, "more than four parts"},
      {{"timecode", "12:34", "--rate", "25"}, "no number for seconds, frames"},
      {{"timecode", "00:01:00;00", "--rate", "29.97"}, "is a label that drop-frame timecode skips"},
      {{"timecode", "00:01:00;00", "--rate", "25"}, "is drop frame, which this frame rate does not have"},
      {{"timecode", "01:00:61:00", "--rate", "25"}, "has minutes or seconds above 59"},
      {{"timecode", "01:00:00:00", "--rate", "-5"}, "\"-5\" is not a frame rate"},
      {{"timecode", "--rate", "25", "--frames", "1.5"}, "is not a number of frames; expected a 64-bit integer"},
      {{"timecode", "--rate", "25", "--frames", "-1"}, "outside 0 to 2^63 - 1"},
      {{"dimension", "1920"}, "is not a size; expected 1920 1080 or 1920x1080"},
      {{"dimension", "1920x1080", "1"}, "is not a width; expected a number of pixels"},
      {{"dimension", "0", "1080"}, "must be above 0"},
  };
  for (const auto& [options, says] : cases) {
    const Outcome outcome = meridianWith(options);
    EXPECT_EQ(outcome.status, 1) << testing::PrintToString(options);
    EXPECT_THAT(outcome.output, IsEmpty()) << testing::PrintToString(options);
    EXPECT_THAT(outcome.errors, AllOf(StartsWith("meridian: "), HasSubstr(says))) << testing::PrintToString(options);
    EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
  }
}

TEST(Command, EverySubcommandHasHelpWithAnExample) {
  for (const Words& options :
       {Words{"parse"}, Words{"render"}, Words{"explain"}, Words{"flags"}, Words{"presets"}, Words{"extensions"},
        Words{"set"}, Words{"rate"}, Words{"timecode"}, Words{"dimension"}, Words{"filter"}, Words{"free-name"},
        Words{"clean-name"}, Words{"transcode"}, Words{"completion"}, Words{"manual"}, Words{}}) {
    Words help = options;
    help.emplace_back("--help");
    const Outcome outcome = meridianWith(help);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("Example:\n  ")) << testing::PrintToString(options);
  }
}

TEST(Command, ListsTheWholeVocabulary) {
  const json flags = json::parse(meridianWith({"flags", "--json"}).output);
  Words known;
  for (const json& flag : flags) {
    if (flag["isKnown"]) known.push_back(flag["text"]);
  }
  EXPECT_THAT(known, testing::ElementsAreArray(allKnownCommandFlags));
  for (const json& flag : flags) {
    Words properties;
    for (const json& property : flag["properties"]) properties.push_back(property["name"]);
    // Every flag says all about itself.
    EXPECT_FALSE(flag["meaning"].get<std::string>().empty()) << flag;
    EXPECT_FALSE(flag["default"].get<std::string>().empty()) << flag;
    EXPECT_FALSE(flag["kind"].get<std::string>().empty()) << flag;
    EXPECT_TRUE(flag["takesValue"] || flag["kind"] == "switch") << flag;
    if (flag["text"] == "-vbr") {
      EXPECT_EQ(flag["properties"][0], json({{"name", "videoBitRate"},
                                             {"kind", "number"},
                                             {"unit", "megabits per second"},
                                             {"allowedValues", json::array()},
                                             {"default", "chosen by the encoder"},
                                             {"example", "3.5"},
                                             {"meaning", "Set the average video bit rate"}}));
    } else if (flag["text"] == "-acl") {
      EXPECT_THAT(properties, ElementsAre("channelLayout", "outputChannels"));
    } else if (flag["text"] == "-preset") {
      EXPECT_EQ(flag["allowedValues"], json({"solvane_cloud", "solvane_4444xq"}));
    } else if (flag["group"] == "command") {
      EXPECT_THAT(properties, IsEmpty());
      EXPECT_THAT(flag["meaning"], StartsWith("Print the"));
    } else if (flag["text"] == "-tc_match") {
      EXPECT_EQ(flag["meaning"], "Take the timecode from the source");
      EXPECT_THAT(properties, ElementsAre("timecodeSource"));
    }
  }
  EXPECT_THAT(meridianWith({"flags"}).output,
              AllOf(HasSubstr("Camera look\n"), HasSubstr("a number, such as 3.5, in megabits per second")));

  const json presets = json::parse(meridianWith({"presets", "--json"}).output);
  ASSERT_EQ(presets.size(), 2U);
  EXPECT_EQ(presets[1]["arguments"][1], json({{"flag", "-vcodec"}, {"value", "prores4444xq"}}));

  const json extensions = json::parse(meridianWith({"extensions", "--json"}).output);
  EXPECT_EQ(extensions["extensions"].size(), allCases<FileExtension>().size());
  EXPECT_EQ(extensions["groups"].size(), fileExtensionGroups.size());
  EXPECT_EQ(meridianWith({"extensions", "--group", "sidecarFileExtensions"}).output, "bak\n");
  EXPECT_EQ(meridianWith({"extensions", "--json", "--group", "sidecarFileExtensions"}).output, "[\n  \"bak\"\n]\n");
}

TEST(Command, ExplainShowsPropertiesAndMeanings) {
  const Words words{"-vr",  "23.976", "-dims", "1280 x 720", "-vn",        "-in_0_0", "/a",
                    "-acl", "5",      "-vbd",  "ten",        "-tc_custom", "1:2:3;4", "-c_space",
                    "SRGB", "-clut",  "/a",    "-asr",       "48000",      "-vbr",    "8.5"};
  const Outcome shown = meridianWith({"explain"}, words);
  for (const std::string text :
       {"23.976 fps = 24000/1001", "\"1280 x 720\" is not a size; did you mean 1280x720?", "video is left out",
        "audio is copied because no codec is given", "\"ten\" is not a whole number", "did you mean 01:02:03;04?",
        "sRGB is lower-cased in reading"}) {
    EXPECT_THAT(shown.output, HasSubstr(text));
  }
  const json document = json::parse(meridianWith({"explain", "--json"}, words).output);
  std::map<std::string, std::string> typed;
  for (const json& setting : document["settings"]) {
    typed[setting["flag"]] = setting["property"].dump() + " " + setting["typed"].dump();
  }
  EXPECT_EQ(typed["-vr"], R"("videoFrameRate" 23.976)");
  EXPECT_EQ(typed["-dims"], R"("videoDimensions" null)");
  EXPECT_EQ(typed["-vn"], R"("omitVideo" true)");
  EXPECT_EQ(typed["-acl"], R"("outputChannels" 5)");
  EXPECT_EQ(typed["-in_0_0"], R"("inputFiles" "/a")");
  EXPECT_EQ(typed["-clut"], R"("lutFile" "/a")");
  EXPECT_EQ(document["notes"].size(), 2U);
}

TEST(Command, StartsWithoutTheLibrariesThatDrawAndReadImagesAndMedia) {
  const Outcome loaded = test::run({"ldd", MERIDIAN_COMMAND});
  EXPECT_THAT(loaded.output, HasSubstr("libc.so"));
  for (const char* const library : {"cairo", "X11", "OpenImageIO", "libav"}) {
    EXPECT_THAT(loaded.output, testing::Not(HasSubstr(library)));
  }
}

TEST(Command, SetEditsProperties) {
  const auto set = [](const Words& assignments, const Words& words) {
    Words options{"set", "--keep-order", "--json"};
    options.insert(options.end(), assignments.begin(), assignments.end());
    const Outcome outcome = meridianWith(options, words);
    return outcome.status == 0 ? json::parse(outcome.output).get<Words>() : Words{outcome.errors};
  };
  EXPECT_EQ(set({"videoFormat=H264", "videoFrameRate=", "videoBitRate=3", "gpuDecode=on"},
                {"-vr", "25", "-vcodec", "h265", "-out", "/a"}),
            (Words{"-vcodec", "h264", "-out", "/a", "-vbr", "3.0", "-gpu_decoding", ""}));
  EXPECT_EQ(set({"inputFiles=/b", "inputFiles=/c d", "includeVideo=false"}, {"-in_1_0", "/a"}),
            (Words{"-in_0_0", "/b", "-in_0_1", "/c d", "-vn", ""}));
  EXPECT_EQ(set({"inputFiles=/b", "inputFiles=", "inputFiles=/c\nd"}, {"-in_1_0", "/a"}), (Words{"-in_0_0", "/c\nd"}));
  EXPECT_EQ(set({"channelLayout="}, {"-acl", "2"}), Words{});
  const Outcome warned = meridianWith({"set", "watermarkText=Hello"}, Words{"stray"});
  EXPECT_THAT(warned.errors, AllOf(HasSubstr("\"-wmt_text\": will be read differently: \"Hello\" as \"hello\""),
                                   HasSubstr("\"stray\": belongs to no flag")));
  struct Case {
    std::string assignment;
    int status;
    std::string message;
  };
  const Case cases[]{{"videoFormat=h246", 1, "did you mean h264? expected a video codec: dnxhd"},
                     {"videoFormat=vp9", 1, "\"vp9\" is not a video codec; expected a video codec: dnxhd, h264"},
                     {"VideoFormat=h264", 2, "unknown property \"VideoFormat\"; did you mean videoFormat?"},
                     {"\x1b[2J=1", 2, "\\x1b[2J"},
                     {"videoBitDepth=-5", 1, "\"videoBitDepth\": cannot begin with \"-\""},
                     {"outputFile= -overwrite", 1, "which marks a flag"},
                     {"videoFormat", 2, "expected PROPERTY=VALUE"}};
  for (const auto& [assignment, status, message] : cases) {
    const Outcome outcome = meridianWith({"set", assignment}, Words{"-web"});
    EXPECT_EQ(outcome.status, status) << assignment;
    EXPECT_THAT(outcome.errors, HasSubstr(message));
    EXPECT_THAT(outcome.output, IsEmpty());
  }
  EXPECT_THAT(
      meridianWith({"set", "--help"}).output,
      HasSubstr("\n  videoFrameRate             Set the frame rate\n                             a frame rate, such "
                "as 23.976, in frames per second\n"));
}

TEST(Command, RateShowsWhatItIsMatchedTo) {
  struct Case {
    std::string rate, encoded, formatted, choice;
  };
  const Case cases[]{
      {"23.976", R"({"ntsc24p":{}})", "23.98 FPS", R"({"case":"custom","description":"Custom: 23.976 fps"})"},
      {"23.967", R"({"custom":{"_0":23.967}})", "23.97 FPS", R"({"case":"fps23_98","description":"23.97 fps"})"},
      {"50/2", R"({"pal25p":{}})", "25 FPS", R"({"case":"fps25","description":"25 fps"})"},
      {"0.5", R"({"custom":{"_0":0.5}})", "0.50 FPS", R"({"case":"halfstep","description":"Half Step"})"},
      {"-25/-1", R"({"pal25p":{}})", "25 FPS", R"({"case":"fps25","description":"25 fps"})"}};
  for (const auto& [rate, encoded, formatted, choice] : cases) {
    const json document = json::parse(meridianWith({"rate", rate, "--json"}).output);
    EXPECT_EQ(document["videoFrameRate"].dump(), encoded) << rate;
    EXPECT_EQ(document["formattedString"], formatted) << rate;
    EXPECT_EQ(document["frameRate"].dump(), choice) << rate;
  }
  EXPECT_THAT(meridianWith({"rate", "119.88"}).output, HasSubstr("ntsc120p looks the same but is 120000/1001"));
  EXPECT_THAT(meridianWith({"rate", "29.97"}).output, AllOf(HasSubstr("ntsc30p"), HasSubstr("30000/1001")));
}

TEST(Command, TimecodeShowsFormComponentsAndFrame) {
  const auto timecode = [](Words words, int status = 0) {
    words.insert(words.begin(), "timecode");
    words.emplace_back("--json");
    const Outcome outcome = meridianWith(words);
    EXPECT_EQ(outcome.status, status) << outcome.errors;
    return ordered_json::parse(outcome.output).dump();
  };
  EXPECT_EQ(timecode({"12:34"}),
            R"({"properForm":false,"components":{"hours":12,"minutes":34,"seconds":0,"frames":0,"isDropFrame":false},)"
            R"("timecodeString":"12:34:00:00"})");
  EXPECT_THAT(timecode({"01:00:00;00", "--rate", "29.97"}), HasSubstr(R"("frameNumber":107892,"error":null})"));
  EXPECT_THAT(timecode({"00:01:00;00", "--rate", "30000/1001"}, 1),
              HasSubstr(R"("frameNumber":null,"error":"droppedLabel"})"));
  EXPECT_THAT(timecode({"00:00:59;29", "--rate", "29.97", "--frames", "1"}),
              HasSubstr(R"("timecodeString":"00:01:00;02","frameNumber":1800,"error":null})"));
  EXPECT_THAT(timecode({"--rate", "25", "--frames", "90000"}), HasSubstr(R"("timecodeString":"01:00:00:00")"));
  EXPECT_THAT(meridianWith({"timecode", "12:34"}).output, HasSubstr("no number for seconds, frames; read as 0"));
  EXPECT_THAT(meridianWith({"timecode", "1:2:3:4"}).output, HasSubstr("each part needs at least two digits"));
  EXPECT_EQ(meridianWith({"timecode", "--rate", "25", "--frames", "9223372036854775807"}).status, 0);
}

TEST(Command, DimensionShowsTheChoice) {
  EXPECT_THAT(meridianWith({"dimension", "320", "220"}).output, StartsWith("QVGA (320x220)\n"));
  const json document = json::parse(meridianWith({"dimension", "1920.0", "800", "--json"}).output);
  EXPECT_EQ(document["case"], "custom");
  EXPECT_EQ(document["description"], "Custom: 1920.0 x 800.0");
  EXPECT_EQ(document["previewSize"], json({{"width", 1920.0}, {"height", 800.0}}));
  EXPECT_THAT(meridianWith({"dimension", "1280X720"}).output, StartsWith("HD (1280 x 720)\n"));
}

TEST(Command, ReportsAFullDisk) {
  const Outcome outcome = test::run(commandOf({"render"}, cardWords), {{}, "/dev/full"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("standard output"));
}

TEST(Command, AcceptsTwentyThousandWords) {
  Words words;
  for (int place = 0; place < 10000; ++place) {
    words.push_back("-in_0_" + std::to_string(place));
    words.push_back("/card/" + std::to_string(place) + ".mov");
  }
  const Outcome outcome = meridianWith({"render", "--null", "--keep-order"}, words);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(std::ranges::count(outcome.output, '\0'), 20000);
}

/// Returns what bash offers for the last of these words.
Words completionsOf(const Words& words) {
  const std::string script = R"(
    source <("$0" completion bash)
    COMP_WORDS=("$0" "$@")
    COMP_CWORD=$#
    _meridian
    ((${#COMPREPLY[@]})) && printf '%s\n' "${COMPREPLY[@]}"
    exit 0)";
  Words command{"bash", "-c", script, MERIDIAN_COMMAND};
  command.insert(command.end(), words.begin(), words.end());
  const Outcome outcome = test::run(command);
  EXPECT_THAT(outcome.errors, IsEmpty());
  Words lines;
  std::istringstream stream(outcome.output);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(Command, CompletionKnowsCommandsOptionsFlagsAndValues) {
  EXPECT_THAT(completionsOf({"pa"}), ElementsAre("parse"));
  EXPECT_THAT(completionsOf({"parse", "--k"}), ElementsAre("--keep-order"));
  EXPECT_THAT(completionsOf({"parse", "--", "-tc_bu"}), testing::Contains("-tc_burn_anchor"));
  EXPECT_THAT(completionsOf({"explain", "--", "-preset", ""}), ElementsAre("solvane_cloud", "solvane_4444xq"));
  EXPECT_THAT(completionsOf({"explain", "--", "-vcodec", "prores422"}),
              ElementsAre("prores422", "prores422hq", "prores422lt", "prores422proxy"));
  EXPECT_THAT(completionsOf({"explain", "--", "-out", "/"}), IsEmpty());  // left to file names
  EXPECT_THAT(completionsOf({"analysis-args", "--check", "--", "-work"}), ElementsAre("-workDirectory"));
  EXPECT_THAT(completionsOf({"extensions", "--group", "side"}), ElementsAre("sidecarFileExtensions"));
  EXPECT_THAT(completionsOf({"completion", ""}), ElementsAre("bash", "zsh", "fish"));
  EXPECT_THAT(completionsOf({"set", "videoF"}), ElementsAre("videoFormat=", "videoFrameRate="));
  EXPECT_THAT(completionsOf({"set", "--n"}), ElementsAre("--null"));
  EXPECT_THAT(completionsOf({"set", "videoFormat", "=", "prores422h"}), ElementsAre("prores422hq"));
  EXPECT_THAT(completionsOf({"set", "prepareForWeb", "="}), ElementsAre("true", "false"));
  EXPECT_THAT(completionsOf({"parse", "--from", "jo"}), IsEmpty());  // left to file names
}

/// What each shell makes of words with a single completion.
const std::pair<std::string, std::string> uniqueCompletions[] = {
    {"meridian pa", "meridian parse"},
    {"meridian lut sa", "meridian lut sample"},
    {"meridian parse --st", "meridian parse --strict"},
    {"meridian parse --from inp", "meridian parse --from input"},
    {"meridian set videoFo", "meridian set videoFormat="},
    {"meridian set videoFormat=dn", "meridian set videoFormat=dnxhd"},
    {"meridian set a= -- -preset solvane_c", "meridian set a= -- -preset solvane_cloud"},
    {"meridian explain -- -gpu_dec", "meridian explain -- -gpu_decoding"},
    {"meridian explain -- -out inp", "meridian explain -- -out input"},
    {"meridian analysis-args --check -- -work", "meridian analysis-args --check -- -workDirectory"},
    {"meridian extensions --group side", "meridian extensions --group sidecarFileExtensions"},
    {"meridian completion f", "meridian completion fish"},
};

bool isInstalled(const std::string& program) { return test::run({"bash", "-c", "command -v " + program}).status == 0; }

TEST(Command, ZshCompletesInARealTerminal) {
  if (!isInstalled("zsh")) GTEST_SKIP() << "zsh is not installed";
  const test::TemporaryDirectory directory;
  directory.write("input", "");
  std::string lines;
  std::string expected;
  for (const auto& [line, completed] : uniqueCompletions) {
    lines += line + '\n';
    expected += completed + '\n';
  }
  // Each line, a tab, a key that writes down the line, and one that clears it. Keys are sent only while the line editor
  // reads them, since the terminal would interpret some itself, and a line only after the one before is written down.
  const Outcome outcome = test::run({"zsh", "-f", "-c", R"(
    zmodload zsh/zpty
    await() { repeat 1200; do eval $1 && return; sleep 0.05; done; print -u2 "no $1"; exit 1 }
    lines() { [[ -e written ]] && wc -l < written || print 0 }
    cd $2
    $1 completion zsh > script
    zpty shell 'TERM=dumb zsh -f -i'
    zpty -w shell 'autoload -Uz compinit; compinit -D -u; source ./script'
    zpty -w shell 'record() { print -r -- ${BUFFER% } >> written }; zle -N record; bindkey "^X^R" record'
    zpty -w shell 'zle-line-init() { print > ready }; zle -N zle-line-init'
    await '[[ -e ready ]]'
    integer count=0
    for line in ${(f)3}; do
      zpty -n -w shell $line$'\t\x18\x12\x15'
      (( ++count ))
      await '(( $(lines) == count ))'
    done
    zpty -w shell exit
    zpty -r -m shell output '*NONE*'  # until the shell ends
    cat written)",
                                     "zsh", MERIDIAN_COMMAND, directory.path(), lines});
  EXPECT_EQ(outcome.output, expected) << outcome.errors;
}

TEST(Command, FishCompletes) {
  if (!isInstalled("fish")) GTEST_SKIP() << "fish is not installed";
  const test::TemporaryDirectory directory;
  directory.write("input", "");
  for (const auto& [line, completed] : uniqueCompletions) {
    const Outcome outcome =
        test::run({"fish", "--no-config", "-c", "cd $argv[2]; $argv[1] completion fish | source; complete -C $argv[3]",
                   MERIDIAN_COMMAND, directory.path(), line});
    const std::string word = completed.substr(completed.rfind(' ') + 1);
    std::set<std::string> offered;
    std::istringstream stream(outcome.output);
    for (std::string each; std::getline(stream, each);) offered.insert(each.substr(0, each.find('\t')));
    if (word.ends_with('=')) std::erase_if(offered, [&word](const auto& each) { return each.size() > word.size(); });
    EXPECT_THAT(offered, ElementsAre(word)) << line << outcome.errors;
  }
}

TEST(Command, ManualPageIsValidRoff) {
  const Outcome manual = meridianWith({"manual"});
  EXPECT_THAT(manual.output, AllOf(HasSubstr(".SH NAME"), HasSubstr("keep\\-order"), HasSubstr("xargs \\-0")));
  const Outcome lint = test::run({"bash", "-c", "\"$0\" manual | mandoc -T lint -W warning", MERIDIAN_COMMAND});
  EXPECT_EQ(lint.status, 0) << lint.output << lint.errors;
}

TEST(Command, WithoutWordsItShowsADemonstration) {
  const Outcome outcome = meridianWith({});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, AllOf(HasSubstr("repeated"), HasSubstr("preset solvane_cloud"),
                                    HasSubstr("did you mean -tc_burn_size?"), HasSubstr("-in_0_1")));
}

}  // namespace
}  // namespace meridian
