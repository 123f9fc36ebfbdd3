// The only file that uses Expat.
#include "meridian/platform/xml_check.h"

#include <expat.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <string_view>

#include "meridian/base/ascii.h"

namespace meridian::inline v0_2 {
namespace {

constexpr std::size_t memoryLimit = std::size_t{16} << 20;

// Expat passes no pointer of ours to its allocation functions. Each thread runs one check at a time, so its allocations
// are counted here.
thread_local std::size_t allocated = 0;

/// Each block begins with its size.
constexpr std::size_t headerSize = alignof(std::max_align_t);

void* allocate(std::size_t size) {
  if (size > memoryLimit || allocated > memoryLimit - size) return nullptr;
  auto* const block = static_cast<char*>(std::malloc(headerSize + size));
  if (block == nullptr) return nullptr;
  *reinterpret_cast<std::size_t*>(block) = size;
  allocated += size;
  return block + headerSize;
}

void release(void* memory) {
  if (memory == nullptr) return;
  char* const block = static_cast<char*>(memory) - headerSize;
  allocated -= *reinterpret_cast<std::size_t*>(block);
  std::free(block);
}

void* reallocate(void* memory, std::size_t size) {
  if (memory == nullptr) return allocate(size);
  char* const block = static_cast<char*>(memory) - headerSize;
  const std::size_t before = *reinterpret_cast<std::size_t*>(block);
  if (size > memoryLimit || allocated - before > memoryLimit - size) return nullptr;
  auto* const moved = static_cast<char*>(std::realloc(block, headerSize + size));
  if (moved == nullptr) return nullptr;
  *reinterpret_cast<std::size_t*>(moved) = size;
  allocated += size - before;
  return moved + headerSize;
}

constexpr XML_Memory_Handling_Suite boundedMemory{allocate, reallocate, release};

int takeUnknownEncoding(void* /*data*/, const XML_Char* /*name*/, XML_Encoding* encoding) {
  constexpr int letter = 0xE9;
  for (int byte = 0; byte < 256; ++byte) encoding->map[byte] = byte < 0x80 ? byte : letter;
  encoding->data = nullptr;
  encoding->convert = nullptr;
  encoding->release = nullptr;
  return XML_STATUS_OK;
}

}  // namespace

bool mayBeginXml(std::span<const char> bytes) noexcept {
  std::string_view text(bytes.data(), bytes.size());
  for (const std::string_view mark : {"\xef\xbb\xbf", "\xff\xfe", "\xfe\xff"}) {
    if (text.starts_with(mark)) {
      text.remove_prefix(mark.size());
      break;
    }
  }
  constexpr std::string_view blanks(" \t\r\n\0", 5);  // half of each UTF-16 character here is zero
  const std::size_t first = text.find_first_not_of(blanks);
  return first == std::string_view::npos || text[first] == '<';
}

struct XmlCheck::Parser {
  XML_Parser expat = nullptr;
  std::size_t allocatedBefore = allocated;
};

XmlCheck::XmlCheck() : parser_(std::make_unique<Parser>()) {
  allocated = 0;
  parser_->expat = XML_ParserCreate_MM(nullptr, &boundedMemory, nullptr);
  if (parser_->expat == nullptr) return;
  XML_SetUnknownEncodingHandler(parser_->expat, takeUnknownEncoding, nullptr);
  // With a default handler of this kind, entities are passed on as written and not expanded.
  XML_SetDefaultHandler(parser_->expat, [](void* /*data*/, const XML_Char* /*text*/, int /*length*/) {});
}

XmlCheck::~XmlCheck() {
  if (parser_->expat != nullptr) XML_ParserFree(parser_->expat);
  allocated = parser_->allocatedBefore;
}

bool XmlCheck::feed(std::span<const char> piece) {
  constexpr std::size_t largest = std::numeric_limits<int>::max();
  while (parser_->expat != nullptr && !piece.empty()) {
    const std::size_t length = std::min(piece.size(), largest);
    if (XML_Parse(parser_->expat, piece.data(), static_cast<int>(length), XML_FALSE) != XML_STATUS_OK) return false;
    piece = piece.subspan(length);
  }
  return parser_->expat != nullptr;
}

bool XmlCheck::finish() {
  return parser_->expat != nullptr && XML_Parse(parser_->expat, nullptr, 0, XML_TRUE) == XML_STATUS_OK;
}

struct XmlElementSearch::Search {
  std::string_view element;
  std::string_view attribute;
  std::optional<std::string> found{};
  XML_Parser expat = nullptr;
  std::size_t allocatedBefore = allocated;

  /// Returns whether a name is one in lower case, but for the case.
  static bool isName(std::string_view name, std::string_view lowercased) noexcept {
    return std::ranges::equal(name, lowercased, {}, detail::lowercasedAscii);
  }

  static void start(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto& search = *static_cast<Search*>(data);
    std::string_view text(name);
    text.remove_prefix(text.rfind(':') + 1);  // npos + 1 is 0
    if (search.found || !isName(text, search.element)) return;
    search.found.emplace();
    for (; *attributes != nullptr; attributes += 2) {
      if (isName(attributes[0], search.attribute)) *search.found = attributes[1];
    }
    XML_StopParser(search.expat, XML_FALSE);
  }
};

XmlElementSearch::XmlElementSearch(std::string_view element, std::string_view attribute)
    : search_(std::make_unique<Search>(Search{element, attribute})) {
  allocated = 0;
  search_->expat = XML_ParserCreate_MM(nullptr, &boundedMemory, nullptr);
  if (search_->expat == nullptr) return;
  XML_SetUserData(search_->expat, search_.get());
  XML_SetStartElementHandler(search_->expat, Search::start);
}

XmlElementSearch::~XmlElementSearch() {
  if (search_->expat != nullptr) XML_ParserFree(search_->expat);
  allocated = search_->allocatedBefore;
}

bool XmlElementSearch::feed(std::span<const char> piece) {
  return search_->expat != nullptr &&
         XML_Parse(search_->expat, piece.data(), static_cast<int>(piece.size()), XML_FALSE) == XML_STATUS_OK;
}

const std::optional<std::string>& XmlElementSearch::found() const noexcept { return search_->found; }

bool XmlElementSearch::isOutOfMemory() const noexcept {
  return search_->expat == nullptr || XML_GetErrorCode(search_->expat) == XML_ERROR_NO_MEMORY;
}

}  // namespace meridian::inline v0_2
