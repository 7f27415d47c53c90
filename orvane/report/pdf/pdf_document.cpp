#include "orvane/report/pdf/pdf_document.h"

#include <array>
#include <cmath>
#include <ctime>
#include <optional>
#include <span>
#include <utility>

#include "orvane/report/pdf/browser/browser_error.h"
#include "orvane/text/number_text.h"

namespace orvane {
namespace {

constexpr std::size_t kTableRow = 20;
constexpr int kMaximumDepth = 32;

[[noreturn]] void fail() {
  throw BrowserError(BrowserError::Case::invalidPDF, "The browser's PDF cannot be read.");
}

bool isSpace(char c) {
  return c == ' ' || c == '\n' || c == '\r' || c == '\t' || c == '\f' || c == '\0';
}

bool isDelimiter(char c) {
  return std::string_view("()<>[]/%").find(c) != std::string_view::npos;
}

void skipSpace(std::string_view& rest) {
  while (!rest.empty() && isSpace(rest.front())) rest.remove_prefix(1);
}

/// The length of the text "(…)" that begins here.
std::size_t literalLength(std::string_view text) {
  int depth = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == '(') {
      ++depth;
    } else if (text[i] == ')' && --depth == 0) {
      return i + 1;
    }
  }
  fail();
}

/// Takes the next word: a bracket, a whole text, a name or a number.
std::string_view takeToken(std::string_view& rest) {
  skipSpace(rest);
  if (rest.empty()) fail();
  std::size_t length = 1;
  if (rest.starts_with("<<") || rest.starts_with(">>")) {
    length = 2;
  } else if (rest.front() == '(') {
    length = literalLength(rest);
  } else if (rest.front() == '<') {
    length = rest.find('>');
    if (length++ == std::string_view::npos) fail();
  } else if (!isDelimiter(rest.front()) || rest.front() == '/') {
    while (length < rest.size() && !isSpace(rest[length]) && !isDelimiter(rest[length])) ++length;
  }
  const auto token = rest.substr(0, length);
  rest.remove_prefix(length);
  return token;
}

template <typename Number>
Number takeNumber(std::string_view& rest) {
  const auto number = NumberText::parsed<Number>(takeToken(rest));
  if (!number) fail();
  return *number;
}

/// Takes a whole value: a reference, a list or dictionary with all that is in it, or one word.
std::string_view takeValue(std::string_view& rest) {
  skipSpace(rest);
  const auto all = rest;
  int depth = 0;
  do {
    const auto token = takeToken(rest);
    if (token == "<<" || token == "[") ++depth;
    if (token == ">>" || token == "]") --depth;
  } while (depth > 0);
  if (depth < 0) fail();
  if (NumberText::parsed<std::size_t>(all.substr(0, all.size() - rest.size()))) {
    auto ahead = rest;  // "7 0 R"
    const auto generation = takeToken(ahead);
    if (NumberText::parsed<int>(generation) && takeToken(ahead) == "R") rest = ahead;
  }
  return all.substr(0, all.size() - rest.size());
}

/// The value of `key` in the dictionary at the start of `text`; empty if there is none.
std::string_view valueOf(std::string_view text, std::string_view key) {
  if (takeToken(text) != "<<") fail();
  for (;;) {
    const auto name = takeToken(text);
    if (name == ">>") return {};
    if (!name.starts_with('/')) fail();
    const auto value = takeValue(text);
    if (name == key) return value;
  }
}

/// `text` with `part`, which lies in it, replaced.
std::string replaced(std::string_view text, std::string_view part, std::string_view replacement) {
  std::string result(text);
  return result.replace(static_cast<std::size_t>(part.data() - text.data()), part.size(),
                        replacement);
}

std::string streamOf(std::string_view content) {
  return ("<</Length " + std::to_string(content.size()) + ">>\nstream\n").append(content) +
         "\nendstream";
}

/// Objects that are put behind a document, where they replace those of the same number or are new
/// (ISO 32000-1, 7.5.6).
class Update {
 public:
  explicit Update(std::size_t offset) : offset_(offset) {}

  void add(std::size_t number, std::string_view object) {
    const auto place = static_cast<std::int64_t>(offset_ + text_.size());
    table_ += std::to_string(number) + " 1\n" + NumberText::padded(place, 10) + " 00000 n \n";
    text_.append(std::to_string(number)).append(" 0 obj\n").append(object).append("\nendobj\n");
  }

  std::string finish(std::string_view trailer) const {
    return text_ + "xref\n" + table_ + "trailer\n" + std::string(trailer) + "\nstartxref\n" +
           std::to_string(offset_ + text_.size()) + "\n%%EOF\n";
  }

 private:
  std::size_t offset_;
  std::string text_ = "\n";
  std::string table_{};
};

bool isDate(std::string_view value) {
  // (D:YYYYMMDDHHmmSS+00'00')
  return value.size() == 25 && value.starts_with("(D:") && value.ends_with(')');
}

}  // namespace

PDFDocument::PDFDocument(std::vector<std::byte> bytes) : bytes_(std::move(bytes)) {
  const auto all = text();
  constexpr std::string_view kStart = "startxref";
  const auto start = all.rfind(kStart);
  if (!all.starts_with("%PDF-") || start == std::string_view::npos) fail();
  auto rest = all.substr(start + kStart.size());
  tableOffset_ = takeNumber<std::size_t>(rest);
  if (tableOffset_ >= all.size()) fail();

  rest = all.substr(tableOffset_);
  if (takeToken(rest) != "xref" || takeNumber<int>(rest) != 0) fail();
  const auto count = takeNumber<std::size_t>(rest);
  skipSpace(rest);
  if (count > rest.size() / kTableRow) fail();
  table_ = rest.substr(0, count * kTableRow);
  rest.remove_prefix(table_.size());
  if (takeToken(rest) != "trailer") fail();
  trailer_ = takeValue(rest);
  if (!valueOf(trailer_, "/Prev").empty()) fail();
  pages_ = objectAt(valueOf(objectAt(valueOf(trailer_, "/Root")), "/Pages"));
  auto pageCount = valueOf(pages_, "/Count");
  pageCount_ = takeNumber<int>(pageCount);
}

std::string_view PDFDocument::text() const noexcept {
  return {reinterpret_cast<const char*>(bytes_.data()), bytes_.size()};
}

/// The object that "7 0 R" stands for.
std::string_view PDFDocument::objectAt(std::string_view reference) const {
  const auto number = takeNumber<std::size_t>(reference);
  if (takeNumber<int>(reference) != 0 || takeToken(reference) != "R") fail();
  if (number >= table_.size() / kTableRow) fail();
  auto row = table_.substr(number * kTableRow, kTableRow);
  const auto offset = takeNumber<std::size_t>(row);
  if (offset >= text().size()) fail();
  auto object = text().substr(offset);
  if (takeNumber<std::size_t>(object) != number || takeNumber<int>(object) != 0 ||
      takeToken(object) != "obj")
    fail();
  return object;
}

/// The reference to it.
std::string_view PDFDocument::firstPage() const {
  auto node = pages_;
  for (int depth = 0; depth < kMaximumDepth; ++depth) {
    auto kids = valueOf(node, "/Kids");
    if (takeToken(kids) != "[") fail();
    const auto kid = takeValue(kids);
    node = objectAt(kid);
    if (valueOf(node, "/Kids").empty()) return kid;
  }
  fail();
}

void PDFDocument::overwrite(std::string_view place, std::string_view value) {
  if (value.size() > place.size()) fail();
  const auto offset = static_cast<std::size_t>(place.data() - text().data());
  for (std::size_t i = 0; i < place.size(); ++i)
    bytes_[offset + i] = static_cast<std::byte>(i < value.size() ? value[i] : ' ');
}

std::vector<std::byte> PDFDocument::withPageOf(int width, int height) && {
  const auto box = valueOf(objectAt(firstPage()), "/MediaBox");
  auto rest = box;
  if (rest.empty() || takeToken(rest) != "[") fail();
  const std::array<double, 4> wanted{0, 0, static_cast<double>(width), static_cast<double>(height)};
  std::array<double, 4> given{};
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    given[i] = takeNumber<double>(rest);
    if (!(std::abs(given[i] - wanted[i]) <= 1)) fail();
  }
  if (takeToken(rest) != "]") fail();
  if (given != wanted)
    overwrite(box, "[0 0 " + std::to_string(width) + " " + std::to_string(height) + "]");
  if (given[3] != wanted[3]) {
    const auto update = updateWithRaisedPage(wanted[3] - given[3]);
    const auto added = std::as_bytes(std::span(update));
    bytes_.insert(bytes_.end(), added.begin(), added.end());
  }
  return std::move(bytes_);
}

/// Drawing begins at the upper edge of the browser's paper, which is not that of the corrected box:
/// as it stands, a white line of a tenth of a point would show at an edge of a dark page.
std::string PDFDocument::updateWithRaisedPage(double distance) const {
  const auto reference = firstPage();
  auto rest = objectAt(reference);
  const auto page = takeValue(rest);
  const auto contents = valueOf(page, "/Contents");
  if (contents.empty()) return {};
  auto inner = contents;
  if (inner.starts_with('[')) inner = inner.substr(1, inner.size() - 2);

  const std::size_t first = table_.size() / kTableRow;
  const auto referenceTo = [](std::size_t number) { return std::to_string(number) + " 0 R"; };
  Update update(bytes_.size());
  rest = reference;
  update.add(takeNumber<std::size_t>(rest),
             replaced(page, contents,
                      "[" + referenceTo(first) + " " + std::string(inner) + " " +
                          referenceTo(first + 1) + "]"));
  update.add(first, streamOf("q 1 0 0 1 0 " + NumberText::fixed(distance, 5) + " cm"));
  update.add(first + 1, streamOf("Q"));
  const auto size = valueOf(trailer_, "/Size");
  if (size.empty()) fail();
  return update.finish(replaced(
      trailer_, size, std::to_string(first + 2) + "\n/Prev " + std::to_string(tableOffset_)));
}

void PDFDocument::setDates(std::int64_t secondsSince1970) {
  const auto time = static_cast<std::time_t>(secondsSince1970);
  std::tm parts{};
  std::array<char, 32> date{};
  if (gmtime_r(&time, &parts) == nullptr ||
      std::strftime(date.data(), date.size(), "(D:%Y%m%d%H%M%S+00'00')", &parts) == 0)
    fail();
  const auto reference = valueOf(trailer_, "/Info");
  if (reference.empty()) return;
  const auto information = objectAt(reference);
  for (const std::string_view key : {"/CreationDate", "/ModDate"}) {
    const auto value = valueOf(information, key);
    if (isDate(value) && isDate(date.data())) overwrite(value, date.data());
  }
}

}  // namespace orvane
