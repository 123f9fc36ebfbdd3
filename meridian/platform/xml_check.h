/// \file
/// Checks whether bytes are a well-formed XML document, and looks for an element in one.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace meridian::inline v0_2 {

/// Returns whether a document can begin with these bytes: with "<" after a byte-order mark and white space, in UTF-8 or
/// UTF-16. True as well if all bytes are white space, since "<" may follow.
[[nodiscard]] bool mayBeginXml(std::span<const char> bytes) noexcept;

/// Checks a document piece by piece. Nothing outside of it is read: external entities and document types are skipped,
/// and internal entities in content are neither expanded nor inspected. A byte above 0x7F in an encoding other than
/// Expat's own (UTF-8, UTF-16, ISO-8859-1, ASCII) counts as a letter. Memory is limited to 16 MiB: a document that
/// needs more, for a single tag or its depth, counts as not well-formed. Only one check at a time on each thread.
class XmlCheck {
 public:
  XmlCheck();
  XmlCheck(const XmlCheck&) = delete;
  XmlCheck& operator=(const XmlCheck&) = delete;
  XmlCheck(XmlCheck&&) = delete;
  XmlCheck& operator=(XmlCheck&&) = delete;
  ~XmlCheck();

  /// Returns whether the document is well-formed so far. After false no more pieces are needed.
  [[nodiscard]] bool feed(std::span<const char> piece);

  /// Returns whether the document is well-formed and complete.
  [[nodiscard]] bool finish();

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
};

/// Looks for an element as readers find it that expand a document's own entities; nothing outside of the document is
/// read. The name counts in any case and with any namespace prefix. Memory is limited as for XmlCheck, of which there
/// must not be one at the same time on the thread.
class XmlElementSearch {
 public:
  /// The names are in lower case.
  XmlElementSearch(std::string_view element, std::string_view attribute);
  XmlElementSearch(const XmlElementSearch&) = delete;
  XmlElementSearch& operator=(const XmlElementSearch&) = delete;
  XmlElementSearch(XmlElementSearch&&) = delete;
  XmlElementSearch& operator=(XmlElementSearch&&) = delete;
  ~XmlElementSearch();

  /// Searches the next piece. Returns whether more pieces are needed: not after the element, nor after damage.
  [[nodiscard]] bool feed(std::span<const char> piece);

  /// Returns the attribute of the first such element, empty if it has none; absent if there was no such element.
  [[nodiscard]] const std::optional<std::string>& found() const noexcept;

  /// Returns whether the search ended because it needs more memory than is allowed.
  [[nodiscard]] bool isOutOfMemory() const noexcept;

 private:
  struct Search;
  std::unique_ptr<Search> search_;
};

}  // namespace meridian::inline v0_2
