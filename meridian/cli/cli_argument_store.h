/// \file
/// The interface of every command-line model of the suite: its flags and values, its argument vector, and list values.
/// For example:
///
///     for (const std::string& element : store.commandLineArguments()) arguments.push_back(element);
///     CliArgumentStore::buildCLIList(std::vector<std::string>{"a", "b"});  // "[a b"
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
/// deliberately no closing bracket, and no escape for a value that contains a space, which reads back as two: the
/// transcoder accepts exactly this form.
class MERIDIAN_API CliArgumentStore {
 public:
  static constexpr std::string_view listPrefix = "[";
  static constexpr std::string_view listValueSeparator = " ";

  virtual ~CliArgumentStore();

  /// Joins the elements of the argument vector with nothing between them and without quotes. The result identifies the
  /// command line for comparing and logging; it cannot be passed to a shell.
  [[nodiscard]] virtual std::string cliString() const;

  /// Returns the argument vector, without a program path: by default two elements for each entry of the lookup, flag
  /// and value, in the lookup's order. The value of a flag without a value is an empty element.
  [[nodiscard]] virtual std::vector<std::string> commandLineArguments() const;

  /// Returns the flags and their values; a flag without a value maps to the empty text.
  [[nodiscard]] virtual const TextDictionary& flagValueLookup() const noexcept = 0;

  /// Returns the values as one list value, and the empty text for no values.
  [[nodiscard]] static std::string buildCLIList(std::span<const std::string_view> values);
  [[nodiscard]] static std::string buildCLIList(std::span<const std::string> values);

  /// Removes every `listPrefix` from both ends of the text, splits the rest at every `listValueSeparator`, and calls
  /// the block with each piece in order, empty ones included. A text without the prefix is split in the same way.
  static void enumerateListValues(std::string_view list, FunctionRef<void(std::string_view)> block);

 protected:
  CliArgumentStore() = default;
  CliArgumentStore(const CliArgumentStore&) = default;
  CliArgumentStore& operator=(const CliArgumentStore&) = default;
  CliArgumentStore(CliArgumentStore&&) = default;
  CliArgumentStore& operator=(CliArgumentStore&&) = default;
};

}  // namespace meridian::inline v0_2
