#include "meridian/engine/creation_date.h"

#include <cstddef>
#include <string>

#include "meridian/base/ascii.h"
#include "meridian/base/numbers.h"

namespace meridian::inline v0_2 {

std::optional<CreationDate> creationDateFrom(std::string_view text) {
  // A "0" is a digit, a "*" is anything.
  constexpr std::string_view form = "0000*00*00*00:00:00";
  if (text.size() < form.size()) return std::nullopt;
  for (std::size_t place = 0; place < form.size(); ++place) {
    const bool fits = form[place] == '0' ? detail::isDigit(text[place]) : form[place] == '*' || text[place] == ':';
    if (!fits) return std::nullopt;
  }
  const auto number = [text](std::size_t place, std::size_t length) {
    return static_cast<int>(integerFromText(text.substr(place, length)).value_or(0));
  };
  using namespace std::chrono;
  const year_month_day day{year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                           std::chrono::day(static_cast<unsigned>(number(8, 2)))};
  if (!day.ok() || number(11, 2) > 23 || number(14, 2) > 59 || number(17, 2) > 59) return std::nullopt;
  CreationDate date{.time = sys_days(day) + hours(number(11, 2)) + minutes(number(14, 2)) + seconds(number(17, 2))};
  std::string_view rest = text.substr(form.size());
  if (rest.starts_with('.')) {
    std::size_t end = 1;
    while (end < rest.size() && detail::isDigit(rest[end])) ++end;
    date.fraction = doubleFromText("0" + std::string(rest.substr(0, end))).value_or(0);
    rest = rest.substr(end);
  }
  date.isUtc = rest == "Z" || rest == "z";
  return date;
}

}  // namespace meridian::inline v0_2
