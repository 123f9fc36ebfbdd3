#include "meridian/c/text.h"

#include <algorithm>

#include "meridian/c/handles.h"
#include "meridian/version.h"

using meridian::c::textOf;

MeridianTexts::MeridianTexts(std::vector<std::string> texts) : values(std::move(texts)), words(values.size() + 1) {
  std::ranges::transform(values, words.begin(),
                         [](const std::string& text) { return const_cast<char*>(text.c_str()); });
}

namespace meridian::inline v0_2::c {

std::vector<std::string> stringsOf(const MeridianText* texts, std::size_t count) {
  std::vector<std::string> strings;
  strings.reserve(count);
  for (const MeridianText text : std::span(texts, count)) strings.emplace_back(viewOf(text));
  return strings;
}

WordViews::WordViews(const MeridianText* words, std::size_t count) {
  if (count > few_.size()) many_.resize(count);
  views_ = count > few_.size() ? std::span(many_) : std::span(few_).first(count);
  std::transform(words, words + count, views_.begin(), [](MeridianText text) { return viewOf(text); });
}

}  // namespace meridian::inline v0_2::c

MeridianText meridian_string_text(const MeridianString* string) noexcept {
  return textOf(std::string_view(string->value));
}
void meridian_string_destroy(MeridianString* string) noexcept { delete string; }

size_t meridian_texts_count(const MeridianTexts* texts) noexcept { return texts->values.size(); }
MeridianText meridian_texts_at(const MeridianTexts* texts, size_t index) noexcept {
  return textOf(index < texts->values.size() ? &texts->values[index] : nullptr);
}
char* const* meridian_texts_words(const MeridianTexts* texts) noexcept { return texts->words.data(); }
void meridian_texts_destroy(MeridianTexts* texts) noexcept { delete texts; }

MeridianText meridian_version() noexcept { return textOf(meridian::versionText()); }
