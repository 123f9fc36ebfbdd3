/// \file
/// Checks whether bytes are a well-formed XML document.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

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

}  // namespace meridian::inline v0_2
