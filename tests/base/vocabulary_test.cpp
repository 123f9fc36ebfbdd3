#include <gtest/gtest.h>

#include <string>
#include <unordered_set>

#include "meridian/base/enumeration.h"
#include "meridian/base/typed_text.h"

namespace meridian {

enum class Shade : std::uint8_t { none, redder, longOne, longTwo };

template <>
struct EnumerationTable<Shade> {
  static constexpr auto rows = std::to_array<EnumerationRow<Shade>>({{Shade::none, "", "No shade"},
                                                                     {Shade::redder, "redder"},
                                                                     {Shade::longOne, "beginning-one-ending-alike"},
                                                                     {Shade::longTwo, "beginning-two-ending-alike"}});
};
static_assert(description(Shade::none) == "No shade" && description(Shade::redder) == "redder");

TEST(Enumeration, FindsExactlyItsRawValues) {
  for (const auto& [shade, raw, description] : EnumerationTable<Shade>::rows) {
    EXPECT_EQ(fromRawValue<Shade>(raw), shade);
    for (std::size_t at = 0; at < raw.size(); ++at) {
      EXPECT_EQ(fromRawValue<Shade>(raw.substr(0, at)), at == 0 ? std::optional(Shade::none) : std::nullopt);
      EXPECT_EQ(fromRawValue<Shade>(std::string(raw).insert(at, 1, raw[at])), std::nullopt);
      EXPECT_EQ(fromRawValue<Shade>(std::string(raw).replace(at, 1, 1, 'E')), std::nullopt);
    }
  }
}

struct Flavour : TypedText<Flavour> {
  using TypedText::TypedText;
};
struct Colour : TypedText<Colour> {
  using TypedText::TypedText;
};
constexpr Flavour mild("mild");
static_assert(Flavour("mild") == mild && Flavour("Mild") != mild && Flavour("hot") < mild);

// Text that outlives the value can be wrapped, but only explicitly; a temporary string cannot. Types do not mix.
static_assert(std::constructible_from<Flavour, std::string&> && std::constructible_from<Flavour, const std::string&>);
static_assert(!std::constructible_from<Flavour, std::string> && !std::constructible_from<Flavour, const std::string>);
static_assert(!std::convertible_to<const char*, Flavour> && !std::convertible_to<std::string_view, Flavour>);
static_assert(!std::equality_comparable_with<Flavour, Colour> && !std::constructible_from<Flavour, Colour>);

TEST(TypedText, IsAViewThatComparesByBytes) {
  const std::string text = "mild";
  const Flavour member(text);
  EXPECT_EQ(member.rawValue().data(), text.data());
  EXPECT_NE(Flavour(std::string_view("mild\0", 5)), mild);
  EXPECT_EQ((std::unordered_set<Flavour>{member, mild, Flavour("hot")}).size(), 2U);
}

}  // namespace meridian
