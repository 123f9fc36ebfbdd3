// Every call without memory: it fails with an error, and changes nothing.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <limits>
#include <new>
#include <string>

#include "meridian/c/meridian.h"

namespace {

constexpr std::size_t unlimited = std::numeric_limits<std::size_t>::max();
std::size_t allocationsLeft = unlimited;

void* allocated(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft != unlimited) --allocationsLeft;
  if (void* const memory = std::malloc(size == 0 ? 1 : size)) return memory;
  throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) { return allocated(size); }
void* operator new[](std::size_t size) { return allocated(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t /*size*/) noexcept { std::free(memory); }

namespace {

std::string contentOf(const MeridianArguments* arguments) {
  std::string content;
  meridian_arguments_enumerate(
      arguments,
      [](MeridianEntry entry, bool* /*stop*/, void* context) {
        static_cast<std::string*>(context)->append(entry.key.data).append(" ").append(entry.value.data).append("\n");
      },
      &content);
  return content;
}

/// Calls with more and more allocations that succeed, until the call does or fails for another reason.
void failAtEachAllocation(const std::string& name, MeridianArguments* arguments,
                          const std::function<bool(MeridianError**)>& call) {
  SCOPED_TRACE(name);
  const std::string before = contentOf(arguments);
  for (std::size_t count = 0; count < 10000; ++count) {
    MeridianError* error = nullptr;
    allocationsLeft = count;
    const bool succeeded = call(&error);
    allocationsLeft = unlimited;
    if (succeeded) return;
    ASSERT_NE(error, nullptr);
    const std::string code = meridian_error_code_name(error).data;
    meridian_error_destroy(error);
    ASSERT_EQ(contentOf(arguments), before) << "allocation " << count;
    if (code != "outOfMemory") return;
  }
  FAIL() << "never has enough memory";
}

TEST(CMemory, LackOfItIsAnErrorAndChangesNothing) {
  ASSERT_TRUE(meridian_set_log([](MeridianText, MeridianText, void*) {}, nullptr, nullptr));
  const MeridianText words[] = {meridian_text("-preset"), meridian_text("solvane_cloud"), meridian_text("-in_0_0"),
                                meridian_text("/card/with/a/long/path/A001C001.mov"), meridian_text("-ac_omit_3")};
  MeridianArguments* const arguments = meridian_arguments_create(words, 5, true, nullptr);
  const MeridianText paths[] = {meridian_text("/another/card/with/a/long/path/B001C001.mov"),
                                meridian_text("/another/card/with/a/long/path/B001C002.mov")};
  const std::int64_t tracks[] = {4, 5, 6};
  const auto setsText = [&](auto setter, const char* text) {
    return [=](MeridianError** error) { return setter(arguments, meridian_text(text), error); };
  };
  const auto makes = [](auto create, auto destroy) {
    return [=](MeridianError** error) {
      auto* const made = create(error);
      destroy(made);
      return made != nullptr;
    };
  };
  using Call = std::function<bool(MeridianError**)>;
  std::string directory = "/tmp/meridian_c_memoryXXXXXX";
  ASSERT_NE(mkdtemp(directory.data()), nullptr);
  const MeridianText directories[] = {meridian_text(directory.c_str())};
  const MeridianText extensions[] = {meridian_text("mov"), meridian_text("an_extension_of_some_length")};
  const std::pair<const char*, Call> calls[] = {
      {"set_input_files",
       [&](MeridianError** error) { return meridian_arguments_set_input_files(arguments, paths, 2, error); }},
      {"set_ignored_audio_file_tracks",
       [&](MeridianError** error) {
         return meridian_arguments_set_ignored_audio_file_tracks(arguments, tracks, 3, error);
       }},
      {"set_channel_layout", setsText(meridian_arguments_set_channel_layout, "5.1")},
      {"set_video_format", setsText(meridian_arguments_set_video_format, "prores422")},
      {"set_output_file", setsText(meridian_arguments_set_output_file, "/out/with/a/long/path/A001.mov")},
      {"set_video_frame_rate",
       [&](MeridianError** error) { return meridian_arguments_set_video_frame_rate(arguments, 23.976F, error); }},
      {"set_property_text",
       [&](MeridianError** error) {
         return meridian_arguments_set_property_text(arguments, "videoFormta", meridian_text("25"), error);
       }},
      {"copy", makes([&](MeridianError** error) { return meridian_arguments_copy(arguments, error); },
                     meridian_arguments_destroy)},
      {"command_line",
       makes([&](MeridianError** error) { return meridian_arguments_command_line_create(arguments, error); },
             meridian_texts_destroy)},
      {"explanation", makes([&](MeridianError** error) { return meridian_explanation_create(words, 5, true, error); },
                            meridian_explanation_destroy)},
      {"lut_open",
       makes([&](MeridianError** error) { return meridian_lut_open(meridian_text("/nowhere/look.cube"), error); },
             meridian_lut_destroy)},
      {"lut_open_published", makes(
                                 [&](MeridianError** error) {
                                   return meridian_lut_open_published(meridian_text("/nowhere/look.cube"), error);
                                 },
                                 meridian_lut_destroy)},
      {"claim_create_consistent", [&](MeridianError** error) {
         MeridianClaim* const claim = meridian_claim_create_consistent(meridian_text("a_name_of_some_length"),
                                                                       extensions, 2, directories, 1, error);
         allocationsLeft = unlimited;
         if (claim == nullptr) {
           EXPECT_TRUE(std::filesystem::is_empty(directory));
           return false;
         }
         for (std::size_t place = 0; place < meridian_claim_count(claim); ++place) {
           unlink(meridian_claim_at(claim, place).path.data);
         }
         meridian_claim_destroy(claim);
         return true;
       }}};
  for (const auto& [name, call] : calls) failAtEachAllocation(name, arguments, call);
  EXPECT_EQ(rmdir(directory.c_str()), 0);
  meridian_arguments_destroy(arguments);
  EXPECT_TRUE(meridian_set_log(nullptr, nullptr, nullptr));
}

}  // namespace
