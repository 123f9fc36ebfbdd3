// Whether bytes are a well-formed XML document.
#pragma once

#include <cstddef>
#include <memory>
#include <span>

namespace meridian::inline v0_2 {

/// Whether a document can begin with these bytes: with "<" behind a byte-order mark and white space, in UTF-8 or
/// UTF-16. True as well while all bytes are white space, since "<" may follow.
[[nodiscard]] bool mayBeginXml(std::span<const char> bytes) noexcept;

/// Reads a document piece by piece and says whether it is well-formed. Nothing outside of it is read: external entities
/// and document types are passed over, and internal entities in content are neither expanded nor looked into. A byte
/// above 0x7F in an encoding that is none of Expat's own (UTF-8, UTF-16, ISO-8859-1, ASCII) counts as a letter. Memory
/// is bounded by 16 MiB: a document that needs more, for a single mark or its depth, counts as not well-formed. One
/// check at a time on a thread.
class XmlCheck {
 public:
  XmlCheck();
  XmlCheck(const XmlCheck&) = delete;
  XmlCheck& operator=(const XmlCheck&) = delete;
  XmlCheck(XmlCheck&&) = delete;
  XmlCheck& operator=(XmlCheck&&) = delete;
  ~XmlCheck();

  /// Whether the document is well-formed so far. After false nothing more need be fed.
  [[nodiscard]] bool feed(std::span<const char> piece);

  /// Whether the document is well-formed and complete.
  [[nodiscard]] bool finish();

 private:
  struct Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace meridian::inline v0_2
