#include "meridian/c/explanation.h"

#include "meridian/c/handles.h"

namespace m = meridian;
using m::c::textOf;

struct MeridianExplanation {
  explicit MeridianExplanation(m::TranscodeExplanation&& explanation)
      : value(std::move(explanation)), arguments{std::move(value.arguments)} {
    settingWarnings.reserve(value.settings.size());
    for (const auto& setting : value.settings) settingWarnings.push_back(m::c::errorsOfAll(setting.warnings));
    rejections.reserve(value.rejectedEntries.size());
    for (const auto& entry : value.rejectedEntries) rejections.push_back(m::c::errorOf(entry.error));
    droppedWordWarnings.reserve(value.droppedWords.size());
    for (const auto& word : value.droppedWords) droppedWordWarnings.push_back(m::c::errorOf(word.warning));
  }

  /// Without its arguments, which are in a handle of their own.
  m::TranscodeExplanation value;
  MeridianArguments arguments;
  std::vector<std::vector<MeridianError>> settingWarnings;
  std::vector<MeridianError> rejections;
  std::vector<MeridianError> droppedWordWarnings;
};

MeridianExplanation* meridian_explanation_create(const MeridianText* words, size_t count,
                                                 bool maintain_original_ordering, MeridianError** error) noexcept {
  return m::c::created(error, [&] {
    return new MeridianExplanation(m::explain(m::c::WordViews(words, count).views(), maintain_original_ordering));
  });
}

void meridian_explanation_destroy(MeridianExplanation* explanation) noexcept { delete explanation; }

const MeridianArguments* meridian_explanation_arguments(const MeridianExplanation* explanation) noexcept {
  return &explanation->arguments;
}

size_t meridian_explanation_setting_count(const MeridianExplanation* explanation) noexcept {
  return explanation->value.settings.size();
}

MeridianSetting meridian_explanation_setting_at(const MeridianExplanation* explanation, size_t index) noexcept {
  const m::ExplainedSetting& setting = explanation->value.settings[index];
  return {.flag = textOf(&setting.flag),
          .value = textOf(&setting.value),
          .written_value = textOf(&setting.writtenValue),
          .source = textOf(rawValue(setting.source)),
          .preset = textOf(setting.preset),
          .preset_value = textOf(setting.presetValue),
          .property = setting.property == nullptr ? MeridianText{nullptr, 0} : textOf(setting.property->name),
          .meaning = textOf(&setting.meaning),
          .readable_text = textOf(setting.readableText),
          .earlier_value_count = setting.earlierValues.size(),
          .warning_count = setting.warnings.size()};
}

MeridianText meridian_explanation_earlier_value_at(const MeridianExplanation* explanation, size_t setting,
                                                   size_t index) noexcept {
  return textOf(&explanation->value.settings[setting].earlierValues[index]);
}

const MeridianError* meridian_explanation_warning_at(const MeridianExplanation* explanation, size_t setting,
                                                     size_t index) noexcept {
  return &explanation->settingWarnings[setting][index];
}

size_t meridian_explanation_preset_count(const MeridianExplanation* explanation) noexcept {
  return explanation->value.presets.size();
}

MeridianText meridian_explanation_preset_at(const MeridianExplanation* explanation, size_t index) noexcept {
  return textOf(rawValue(explanation->value.presets[index].preset));
}

size_t meridian_explanation_earlier_preset_count(const MeridianExplanation* explanation, size_t preset) noexcept {
  return explanation->value.presets[preset].earlierNames.size();
}

MeridianText meridian_explanation_earlier_preset_at(const MeridianExplanation* explanation, size_t preset,
                                                    size_t index) noexcept {
  return textOf(&explanation->value.presets[preset].earlierNames[index]);
}

size_t meridian_explanation_rejected_count(const MeridianExplanation* explanation) noexcept {
  return explanation->value.rejectedEntries.size();
}

MeridianRejected meridian_explanation_rejected_at(const MeridianExplanation* explanation, size_t index) noexcept {
  const m::RejectedEntry& entry = explanation->value.rejectedEntries[index];
  return {.flag = textOf(&entry.flag),
          .written_flag = textOf(&entry.writtenFlag),
          .value = textOf(&entry.value),
          .suggestion = textOf(entry.suggestion),
          .valueless = textOf(entry.valueless),
          .earlier_value_count = entry.earlierValues.size(),
          .error = &explanation->rejections[index]};
}

MeridianText meridian_explanation_rejected_earlier_value_at(const MeridianExplanation* explanation, size_t rejected,
                                                            size_t index) noexcept {
  return textOf(&explanation->value.rejectedEntries[rejected].earlierValues[index]);
}

size_t meridian_explanation_dropped_word_count(const MeridianExplanation* explanation) noexcept {
  return explanation->value.droppedWords.size();
}

MeridianDroppedWord meridian_explanation_dropped_word_at(const MeridianExplanation* explanation,
                                                         size_t index) noexcept {
  const m::DroppedWord& word = explanation->value.droppedWords[index];
  return {.place = word.index, .word = textOf(&word.word), .warning = &explanation->droppedWordWarnings[index]};
}

size_t meridian_explanation_note_count(const MeridianExplanation* explanation) noexcept {
  return explanation->value.notes.size();
}

MeridianText meridian_explanation_note_at(const MeridianExplanation* explanation, size_t index) noexcept {
  return textOf(&explanation->value.notes[index]);
}
