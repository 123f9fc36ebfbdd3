// What every command-line model of the suite offers: its flags and values, its argument vector, and list values.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "meridian/base/function_ref.h"
#include "meridian/base/text_dictionary.h"
#include "meridian/export.h"

namespace meridian::inline v0_2 {

/// An ordered command-line store of flags and values.
///
/// A list value is one text for several values: `listPrefix`, then the values joined by `listValueSeparator`. There is
/// no closing bracket, and a value that holds a blank comes apart when the list is read. Both are on purpose: the
/// transcoder reads exactly this form.
class MERIDIAN_API CliArgumentStore {
 public:
  static constexpr std::string_view listPrefix = "[";
  static constexpr std::string_view listValueSeparator = " ";

  virtual ~CliArgumentStore();

  /// The elements of the argument vector run together with nothing between them and no quoting. On purpose: it is an
  /// identity of the command line for comparing and logging, and nothing to hand to a shell.
  [[nodiscard]] virtual std::string cliString() const;

  /// The argument vector, without a program path: by default every entry of the lookup as two elements, flag and value,
  /// in the lookup's order. A flag without value contributes its empty value too.
  [[nodiscard]] virtual std::vector<std::string> commandLineArguments() const;

  /// The flags and their values; a flag without value maps to the empty text.
  [[nodiscard]] virtual const TextDictionary& flagValueLookup() const noexcept = 0;

  /// The values as one list value; the empty text for no values.
  [[nodiscard]] static std::string buildCLIList(std::span<const std::string_view> values);
  [[nodiscard]] static std::string buildCLIList(std::span<const std::string> values);

  /// Removes every `listPrefix` character from both ends of the text, splits the rest at every `listValueSeparator`,
  /// and calls the block with each piece in order, empty ones too. A text without the prefix is split all the same.
  static void enumerateListValues(std::string_view list, FunctionRef<void(std::string_view)> block);

 protected:
  CliArgumentStore() = default;
  CliArgumentStore(const CliArgumentStore&) = default;
  CliArgumentStore& operator=(const CliArgumentStore&) = default;
  CliArgumentStore(CliArgumentStore&&) = default;
  CliArgumentStore& operator=(CliArgumentStore&&) = default;
};

}  // namespace meridian::inline v0_2
