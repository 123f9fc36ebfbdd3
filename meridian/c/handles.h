/// \file
/// What the functions of the C interface share: the C++ objects behind its handles, texts in both directions, and the
/// one place where an exception becomes an error.
///
///     MeridianString* meridian_timecode_string_create(MeridianTimecode timecode, MeridianError** error) noexcept {
///       return created(error, [&] { return new MeridianString{componentsOf(timecode).timecodeString()}; });
///     }
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "meridian/base/enumeration.h"
#include "meridian/base/error.h"
#include "meridian/base/typed_text.h"
#include "meridian/c/error.h"
#include "meridian/c/text.h"
#include "meridian/cli/media_analysis_errors.h"
#include "meridian/cli/media_analysis_reading.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_properties.h"
#include "meridian/fs/claimed_files.h"
#include "meridian/fs/tree_walk.h"
#include "meridian/lut/image_view.h"
#include "meridian/lut/lut_error.h"
#include "meridian/lut/lut_warning.h"
#include "meridian/media/frame_number.h"

struct MeridianString {
  std::string value;
};

struct MeridianTexts {
  explicit MeridianTexts(std::vector<std::string> texts);

  std::vector<std::string> values;
  /// Ends with NULL.
  std::vector<char*> words;
};

struct MeridianError {
  std::string_view area;
  int code = 0;
  std::string_view codeName;
  std::string place;
  std::string_view text;
  std::string detail;
  std::string remedy;
  std::string message;
};

struct MeridianErrors {
  std::vector<MeridianError> values;
};

struct MeridianArguments {
  meridian::TranscodeCliArguments value;
};

namespace meridian::inline v0_2::c {

/// What any call may meet.
enum class CallErrorCode : std::uint8_t { outOfMemory, notDecoded, notEncoded, unknownName, unexpected };

/// The name of an error's vocabulary.
template <ErrorCode Code>
inline constexpr std::string_view areaOf = {};
template <>
inline constexpr std::string_view areaOf<PropertyErrorCode> = "property";
template <>
inline constexpr std::string_view areaOf<TranscodeErrorCode> = "transcode";
template <>
inline constexpr std::string_view areaOf<TranscodeWarningCode> = "transcodeWarning";
template <>
inline constexpr std::string_view areaOf<TimecodeErrorCode> = "timecode";
template <>
inline constexpr std::string_view areaOf<LutErrorCode> = "lut";
template <>
inline constexpr std::string_view areaOf<LutWarningCode> = "lutWarning";
template <>
inline constexpr std::string_view areaOf<ImageErrorCode> = "image";
template <>
inline constexpr std::string_view areaOf<TreeWalkErrorCode> = "treeWalk";
template <>
inline constexpr std::string_view areaOf<ClaimErrorCode> = "claim";
template <>
inline constexpr std::string_view areaOf<MediaAnalysisCLIError> = "analysis";
template <>
inline constexpr std::string_view areaOf<MediaAnalysisCLIImageError> = "analysisImage";
template <>
inline constexpr std::string_view areaOf<MediaAnalysisCLIWarningCode> = "analysisWarning";
template <>
inline constexpr std::string_view areaOf<MediaAnalysisCLIWritingWarningCode> = "analysisWritingWarning";

/// Views a text that a caller passed.
[[nodiscard]] inline std::string_view viewOf(MeridianText text) noexcept {
  return text.data == nullptr ? std::string_view() : std::string_view(text.data, text.size);
}
[[nodiscard]] inline std::string_view viewOf(const char* name) noexcept {
  return name == nullptr ? std::string_view() : std::string_view(name);
}
/// Returns an absent text as an absent value.
[[nodiscard]] inline std::optional<std::string_view> optionalViewOf(MeridianText text) noexcept {
  if (text.data == nullptr) return std::nullopt;
  return viewOf(text);
}

/// View a text for a caller. All of them are followed by a NUL, since they are whole strings or literals.
[[nodiscard]] inline MeridianText textOf(std::string_view text) noexcept {
  return {text.data() == nullptr ? "" : text.data(), text.size()};
}
[[nodiscard]] inline MeridianText textOf(const std::string* text) noexcept {
  return text == nullptr ? MeridianText{nullptr, 0} : textOf(std::string_view(*text));
}
template <typename Value>
[[nodiscard]] MeridianText textOf(const std::optional<Value>& value) noexcept {
  if (!value) return {nullptr, 0};
  if constexpr (TabledEnumeration<Value>) {
    return textOf(rawValue(*value));
  } else if constexpr (TypedTextType<Value>) {
    return textOf(value->rawValue());
  } else {
    return textOf(std::string_view(*value));
  }
}

/// Copies an array of texts.
[[nodiscard]] std::vector<std::string> stringsOf(const MeridianText* texts, std::size_t count);

/// Views of the words of a vector, which allocate nothing for one of usual length.
class WordViews {
 public:
  WordViews(const MeridianText* words, std::size_t count);
  WordViews(const WordViews&) = delete;
  WordViews& operator=(const WordViews&) = delete;
  ~WordViews() = default;

  [[nodiscard]] std::span<const std::string_view> views() const noexcept { return views_; }

 private:
  std::array<std::string_view, 32> few_;
  std::vector<std::string_view> many_;
  std::span<std::string_view> views_;
};

/// Makes the error of a caller from any error or warning of the library.
template <typename LibraryError>
  requires requires { typename LibraryError::CodeType; }
[[nodiscard]] MeridianError errorOf(const LibraryError& error) {
  using Code = typename LibraryError::CodeType;
  static_assert(!areaOf<Code>.empty());
  return {areaOf<Code>, static_cast<int>(error.code), rawValue(error.code), error.place, error.text(),
          error.detail, std::string(error.remedy()),  error.message()};
}
template <ErrorCode Code>
[[nodiscard]] MeridianError errorOf(Code code) {
  return errorOf(Error<Code>{code});
}

template <typename LibraryErrors>
[[nodiscard]] std::vector<MeridianError> errorsOfAll(const LibraryErrors& errors) {
  std::vector<MeridianError> result;
  result.reserve(errors.size());
  for (const auto& error : errors) result.push_back(errorOf(error));
  return result;
}

/// Stores an error for the caller, if one is wanted.
void store(MeridianError** destination, MeridianError&& error);

/// Stores the error and returns false.
template <typename LibraryError>
[[nodiscard]] bool failed(MeridianError** destination, const LibraryError& error) {
  if (destination != nullptr) store(destination, errorOf(error));
  return false;
}

/// Stores the exception that is being handled as an error; never throws.
void storeException(MeridianError** destination) noexcept;

/// Does the work, which returns true or false; returns false and stores an error if it throws.
template <typename Work>
[[nodiscard]] bool done(MeridianError** error, Work&& work) noexcept {
  try {
    return work();
  } catch (...) {
    storeException(error);
    return false;
  }
}

/// Does the work, which returns a handle or NULL; returns NULL and stores an error if it throws.
template <typename Work>
[[nodiscard]] auto created(MeridianError** error, Work&& work) noexcept -> decltype(work()) {
  try {
    return work();
  } catch (...) {
    storeException(error);
    return nullptr;
  }
}

}  // namespace meridian::inline v0_2::c

template <>
struct meridian::EnumerationTable<meridian::c::CallErrorCode> {
  using Code = meridian::c::CallErrorCode;
  static constexpr auto rows = std::to_array<ErrorRow<Code>>({
      {Code::outOfMemory, "outOfMemory", "there is not enough memory", "close other programs, or do less at once"},
      {Code::notDecoded, "notDecoded", "cannot be decoded from JSON", "check that the document was stored by Meridian"},
      {Code::notEncoded, "notEncoded", "cannot be encoded as JSON", "store the command line's words instead"},
      {Code::unknownName, "unknownName", "is not a name of this vocabulary", "check the spelling"},
      {Code::unexpected, "unexpected", "failed unexpectedly", "report this message"},
  });
};

namespace meridian::inline v0_2::c {

template <>
inline constexpr std::string_view areaOf<CallErrorCode> = "call";

using CallError = Error<CallErrorCode>;

}  // namespace meridian::inline v0_2::c
