#include "meridian/cli/cli_argument_store.h"

#include <algorithm>
#include <numeric>

namespace meridian::inline v0_2 {
namespace {

template <typename Text>
std::string listOf(std::span<const Text> values) {
  std::string list;
  for (const Text& value : values) {
    list += list.empty() ? CliArgumentStore::listPrefix : CliArgumentStore::listValueSeparator;
    list += value;
  }
  return list;
}

}  // namespace

CliArgumentStore::~CliArgumentStore() = default;

std::string CliArgumentStore::cliString() const {
  const std::vector<std::string> elements = commandLineArguments();
  std::string result;
  result.reserve(std::transform_reduce(elements.begin(), elements.end(), std::size_t{0}, std::plus<>(),
                                       [](const std::string& element) { return element.size(); }));
  for (const std::string& element : elements) result += element;
  return result;
}

std::vector<std::string> CliArgumentStore::commandLineArguments() const {
  std::vector<std::string> elements;
  elements.reserve(2 * flagValueLookup().size());
  for (const auto& [flag, value] : flagValueLookup()) {
    elements.push_back(flag);
    elements.push_back(value);
  }
  return elements;
}

std::string CliArgumentStore::buildCLIList(std::span<const std::string_view> values) { return listOf(values); }

std::string CliArgumentStore::buildCLIList(std::span<const std::string> values) { return listOf(values); }

void CliArgumentStore::enumerateListValues(std::string_view list, FunctionRef<void(std::string_view)> block) {
  const std::size_t first = list.find_first_not_of(listPrefix);
  const std::size_t last = list.find_last_not_of(listPrefix);
  list = first == std::string_view::npos ? std::string_view() : list.substr(first, last - first + 1);
  while (true) {
    const std::size_t separator = list.find(listValueSeparator);
    block(list.substr(0, separator));
    if (separator == std::string_view::npos) return;
    list.remove_prefix(separator + listValueSeparator.size());
  }
}

}  // namespace meridian::inline v0_2
