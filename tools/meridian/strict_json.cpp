#include "tools/meridian/strict_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

namespace meridian::command {
namespace {

/// Builds the document as the parser reports its parts. An ordered object compares a new member with all others, so
/// members are appended here, and repeated ones are found by a set.
class DocumentBuilder : public nlohmann::json_sax<Json> {
 public:
  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& /*text*/) override { return add(value); }
  bool binary(binary_t& /*value*/) override { return false; }  // JSON has none
  bool string(string_t& value) override { return !hasNul(value) && add(std::move(value)); }

  bool start_object(std::size_t /*count*/) override { return open(Json::object()); }
  bool start_array(std::size_t /*count*/) override { return open(Json::array()); }
  bool end_object() override { return close(); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    if (hasNul(name)) return false;
    if (!open_.back().names.insert(name).second) return fail(VectorInputErrorCode::repeatedMember, name);
    open_.back().nextName = std::move(name);
    return true;
  }

  bool parse_error(std::size_t position, const std::string& /*lastToken*/,
                   const nlohmann::detail::exception& exception) override {
    position_ = position;
    // "[json.exception.parse_error.101] parse error at line 1, column 5: syntax error while ..."
    const std::string_view what = exception.what();
    const std::size_t column = what.find("column ");
    const std::size_t begin = column == std::string_view::npos ? column : what.find(": ", column);
    return fail(VectorInputErrorCode::invalidJson,
                std::string(begin == std::string_view::npos ? what : what.substr(begin + 2)));
  }

  [[nodiscard]] Json takeDocument() { return std::move(document_); }
  [[nodiscard]] const std::optional<VectorInputError>& error() const noexcept { return error_; }
  /// Returns the place of a syntax error in the text, in bytes from 1; 0 for another error.
  [[nodiscard]] std::size_t position() const noexcept { return position_; }

 private:
  struct OpenValue {
    Json* value;
    std::string nextName;
    std::unordered_set<std::string> names;
  };

  bool fail(VectorInputErrorCode code, std::string detail) {
    error_ = VectorInputError{{code, "", std::move(detail)}};
    return false;
  }

  bool hasNul(const std::string& text) {
    const bool has = text.find('\0') != std::string::npos;
    if (has) fail(VectorInputErrorCode::containsNul, text);
    return has;
  }

  /// Returns where the value was put.
  Json* put(Json value) {
    if (open_.empty()) {
      document_ = std::move(value);
      return &document_;
    }
    OpenValue& parent = open_.back();
    if (parent.value->is_array()) {
      parent.value->push_back(std::move(value));
      return &parent.value->back();
    }
    auto& members = parent.value->get_ref<Json::object_t&>();
    members.push_back({std::exchange(parent.nextName, {}), std::move(value)});
    return &members.back().second;
  }

  bool add(Json value) {
    put(std::move(value));
    return true;
  }

  bool open(Json empty) {
    constexpr std::size_t deepest = 64;
    if (open_.size() == deepest) return fail(VectorInputErrorCode::tooDeep, "");
    open_.push_back({put(std::move(empty)), {}, {}});
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  Json document_;
  std::vector<OpenValue> open_;
  std::optional<VectorInputError> error_;
  std::size_t position_ = 0;
};

}  // namespace

Expected<Json, VectorInputError> parseStrictJson(std::string_view text, std::size_t firstLine) {
  DocumentBuilder builder;
  if (Json::sax_parse(text.begin(), text.end(), &builder)) return builder.takeDocument();
  VectorInputError error = builder.error().value_or(VectorInputError{{VectorInputErrorCode::invalidJson}});
  error.line = firstLine;
  if (builder.position() > 0) {
    const std::string_view before = text.substr(0, std::min(builder.position() - 1, text.size()));
    const auto startsCharacter = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; };
    error.line += static_cast<std::size_t>(std::ranges::count(before, '\n'));
    const std::string_view inLine = before.substr(before.rfind('\n') + 1);
    error.column = 1 + static_cast<std::size_t>(std::ranges::count_if(inLine, startsCharacter));
  }
  return Unexpected(std::move(error));
}

}  // namespace meridian::command
