#include "meridian/c/arguments.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "meridian/c/handles.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"

namespace m = meridian;
using m::c::created;
using m::c::done;
using m::c::failed;
using m::c::textOf;
using m::c::viewOf;

namespace {

/// Passes entries to a visitor until it stops.
class EntryPasser {
 public:
  EntryPasser(MeridianEntryVisitor visit, void* context) : visit_(visit), context_(context) {}

  void operator()(std::string_view key, std::string_view value) {
    if (!stop_) visit_({textOf(key), textOf(value)}, &stop_, context_);
  }
  [[nodiscard]] bool isStopped() const noexcept { return stop_; }

 private:
  MeridianEntryVisitor visit_;
  void* context_;
  bool stop_ = false;
};

/// Does the work with the property of this name, or stores an error.
template <typename Work>
bool doneWithProperty(const char* name, MeridianError** error, Work&& work) noexcept {
  return done(error, [&] {
    const auto property = m::transcodePropertyNamed(viewOf(name));
    return property ? work(**property) : failed(error, property.error());
  });
}

/// Returns the JSON library's message without the name of its exception, "[json.exception.parse_error.101] ".
std::string withoutPrefix(std::string_view message) {
  const std::size_t end = message.find("] ");
  if (message.starts_with('[') && end != std::string_view::npos) message.remove_prefix(end + 2);
  return std::string(message);
}

/// Sets a property that is a list.
bool setList(MeridianArguments* arguments, std::string_view name, const m::PropertyValue& value,
             MeridianError** error) {
  const auto set = m::setPropertyValue(arguments->value, *m::findTranscodeProperty(name), value);
  return set ? true : failed(error, set.error());
}

}  // namespace

MeridianArguments* meridian_arguments_create(const MeridianText* words, size_t count, bool maintain_original_ordering,
                                             MeridianError** error) noexcept {
  return created(error, [&] {
    return new MeridianArguments{
        m::TranscodeCliArguments(m::c::WordViews(words, count).views(), maintain_original_ordering)};
  });
}

MeridianArguments* meridian_arguments_create_from_main(int argc, char* const* argv, bool maintain_original_ordering,
                                                       MeridianError** error) noexcept {
  return created(
      error, [&] { return new MeridianArguments{m::TranscodeCliArguments(argc, argv, maintain_original_ordering)}; });
}

MeridianArguments* meridian_arguments_create_from_dictionary(const MeridianEntry* entries, size_t count,
                                                             MeridianError** error) noexcept {
  return created(error, [&] {
    m::TextDictionary lookup;
    lookup.reserve(count);
    for (const MeridianEntry& entry : std::span(entries, count)) {
      lookup.erase(viewOf(entry.key));  // a later entry counts at its own place
      lookup.set(viewOf(entry.key), viewOf(entry.value));
    }
    return new MeridianArguments{m::TranscodeCliArguments::fromArgumentLookup(lookup)};
  });
}

MeridianArguments* meridian_arguments_create_from_json(MeridianText json, MeridianError** error) noexcept {
  return created(error, [&]() -> MeridianArguments* {
    try {
      return new MeridianArguments{nlohmann::json::parse(viewOf(json)).get<m::TranscodeCliArguments>()};
    } catch (const nlohmann::json::exception& exception) {
      std::ignore =
          failed(error, m::c::CallError{m::c::CallErrorCode::notDecoded, {}, withoutPrefix(exception.what())});
      return nullptr;
    }
  });
}

MeridianArguments* meridian_arguments_copy(const MeridianArguments* arguments, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianArguments(*arguments); });
}

void meridian_arguments_destroy(MeridianArguments* arguments) noexcept { delete arguments; }

bool meridian_arguments_has_flag(const MeridianArguments* arguments, const char* flag) noexcept {
  return arguments->value.hasArgumentFlag(viewOf(flag));
}

MeridianText meridian_arguments_value(const MeridianArguments* arguments, const char* flag) noexcept {
  return textOf(arguments->value.argumentFlagValue(viewOf(flag)));
}

bool meridian_arguments_set_value(MeridianArguments* arguments, const char* flag, MeridianText value,
                                  MeridianError** error) noexcept {
  return done(error, [&] {
    arguments->value.setArgumentFlagValue(viewOf(flag), m::c::optionalViewOf(value));
    return true;
  });
}

size_t meridian_arguments_count(const MeridianArguments* arguments) noexcept {
  return arguments->value.flagValueLookup().size();
}

void meridian_arguments_enumerate(const MeridianArguments* arguments, MeridianEntryVisitor visit,
                                  void* context) noexcept {
  EntryPasser pass(visit, context);
  for (const auto& [flag, value] : arguments->value.flagValueLookup()) {
    pass(flag, value);
    if (pass.isStopped()) return;
  }
}

bool meridian_arguments_all_flags_are_valid(const MeridianArguments* arguments) noexcept {
  return arguments->value.allFlagsAreValid();
}

void meridian_arguments_enumerate_rejected(const MeridianArguments* arguments, MeridianEntryVisitor visit,
                                           void* context) noexcept {
  EntryPasser pass(visit, context);
  arguments->value.enumerateUnknownFlags(pass);
}

MeridianTexts* meridian_arguments_command_line_create(const MeridianArguments* arguments,
                                                      MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianTexts(arguments->value.commandLine()); });
}

MeridianString* meridian_arguments_json_create(const MeridianArguments* arguments, MeridianError** error) noexcept {
  return created(error, [&] { return new MeridianString{nlohmann::ordered_json(arguments->value).dump()}; });
}

MeridianErrors* meridian_arguments_reading_back_warnings_create(const MeridianArguments* arguments,
                                                                MeridianError** error) noexcept {
  return created(error,
                 [&] { return new MeridianErrors{m::c::errorsOfAll(m::readingBackWarnings(arguments->value))}; });
}

bool meridian_arguments_source_file_analysis_required(const MeridianArguments* arguments) noexcept {
  return arguments->value.sourceFileAnalysisRequired();
}

bool meridian_arguments_enumerate_input_files(const MeridianArguments* arguments, MeridianInputFileVisitor visit,
                                              void* context, MeridianError** error) noexcept {
  return done(error, [&] {
    bool stop = false;
    arguments->value.enumerateInputFileGroups([&](std::span<const std::string_view> paths, std::int64_t group) {
      for (const std::string_view path : paths) {
        if (stop) return;
        visit(textOf(path), group, &stop, context);
      }
    });
    return true;
  });
}

bool meridian_arguments_set_input_files(MeridianArguments* arguments, const MeridianText* paths, size_t count,
                                        MeridianError** error) noexcept {
  return done(error, [&] { return setList(arguments, "inputFiles", m::c::stringsOf(paths, count), error); });
}

bool meridian_arguments_enumerate_ignored_audio_file_tracks(const MeridianArguments* arguments,
                                                            MeridianTrackVisitor visit, void* context,
                                                            MeridianError** error) noexcept {
  return done(error, [&] {
    bool stop = false;
    arguments->value.enumerateIgnoredAudioFileTracks([&](std::int64_t track) {
      if (!stop) visit(track, &stop, context);
    });
    return true;
  });
}

bool meridian_arguments_set_ignored_audio_file_tracks(MeridianArguments* arguments, const int64_t* tracks, size_t count,
                                                      MeridianError** error) noexcept {
  return done(error, [&] {
    return setList(arguments, "ignoredAudioFileTracks", std::vector<std::int64_t>(tracks, tracks + count), error);
  });
}

size_t meridian_property_count() noexcept { return m::transcodeProperties.size(); }

MeridianProperty meridian_property_at(size_t index) noexcept {
  const m::TranscodeProperty& property = m::transcodeProperties[index];
  return {textOf(property.name),       textOf(property.flag),    textOf(rawValue(property.kind)), textOf(property.unit),
          textOf(property.whenAbsent), textOf(property.example), textOf(property.meaning)};
}

MeridianTexts* meridian_property_allowed_texts_create(const char* name, MeridianError** error) noexcept {
  MeridianTexts* texts = nullptr;
  std::ignore = doneWithProperty(name, error, [&](const m::TranscodeProperty& property) {
    const auto allowed = m::allowedTexts(property);
    texts = new MeridianTexts({allowed.begin(), allowed.end()});
    return true;
  });
  return texts;
}

MeridianString* meridian_arguments_property_text_create(const MeridianArguments* arguments, const char* name,
                                                        MeridianError** error) noexcept {
  MeridianString* string = nullptr;
  std::ignore = doneWithProperty(name, error, [&](const m::TranscodeProperty& property) {
    if (auto text = m::propertyText(arguments->value, property)) string = new MeridianString{*std::move(text)};
    return true;
  });
  return string;
}

bool meridian_arguments_set_property_text(MeridianArguments* arguments, const char* name, MeridianText input,
                                          MeridianError** error) noexcept {
  return doneWithProperty(name, error, [&](const m::TranscodeProperty& property) {
    const auto set = m::setPropertyText(arguments->value, property, viewOf(input));
    return set ? true : failed(error, set.error());
  });
}

bool meridian_arguments_remove_property(MeridianArguments* arguments, const char* name,
                                        MeridianError** error) noexcept {
  return doneWithProperty(name, error, [&](const m::TranscodeProperty& property) {
    m::removeProperty(arguments->value, property);
    return true;
  });
}

void meridian_enumerate_known_flags(MeridianTextVisitor visit, void* context) noexcept {
  bool stop = false;
  for (const std::string_view flag : m::allKnownCommandFlags) {
    visit(textOf(flag), &stop, context);
    if (stop) return;
  }
}

bool meridian_enumerate_preset(const char* preset, MeridianEntryVisitor visit, void* context,
                               MeridianError** error) noexcept {
  return done(error, [&] {
    const auto named = m::fromRawValue<m::TranscodeCliPreset>(viewOf(preset));
    if (!named) {
      return failed(error, m::c::CallError{m::c::CallErrorCode::unknownName, std::string(viewOf(preset))});
    }
    EntryPasser pass(visit, context);
    for (const auto& [flag, value] : m::orderedArguments(*named)) pass(flag, value);
    return true;
  });
}

MeridianText meridian_transcode_mode_flag() noexcept {
  return textOf(m::TranscodeCliArguments::runInTranscodeModeFlag);
}
