#pragma once

#include <cstddef>
#include <cstdio>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane::test {

/// What a page of a sample PDF says of itself.
struct SamplePDF {
  int pageCount = 1;
  std::string mediaBox = "[0 0 793.91998 1122.95996]";
  std::string contents = "9 0 R";
  std::string information =
      "<</Title (\\(/MediaBox [9 9 9 9] >> \\) /Count 7)\n/CreationDate (D:20260102030405+00'00')\n"
      "/ModDate (D:20260102030405+00'00')>>";

  /// As browsers write it: objects, then a table of where they are.
  std::string text() const {
    std::string kids;
    for (int i = 0; i < pageCount; ++i) kids += std::to_string(4 + i) + " 0 R ";
    std::vector<std::string> objects = {
        information, "<</Type /Catalog\n/Pages 3 0 R>>",
        "<</Type /Pages\n/Count " + std::to_string(pageCount) + "\n/Kids [" + kids + "]>>"};
    for (int i = 0; i < pageCount; ++i)
      objects.push_back(
          "<</Type /Page\n/Resources <</ProcSet [/PDF /Text]\n/Other <</MediaBox [1 2 3 4]>>>>\n"
          "/MediaBox " +
          mediaBox + "\n/Contents " + contents + "\n/Parent 3 0 R>>");
    std::string file = "%PDF-1.4\n";
    std::string table = "0000000000 65535 f \n";
    for (std::size_t i = 0; i < objects.size(); ++i) {
      char row[24];
      std::snprintf(row, sizeof row, "%010zu 00000 n \n", file.size());
      table += row;
      file += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::string size = std::to_string(objects.size() + 1);
    const auto start = std::to_string(file.size());
    return file + "xref\n0 " + size + "\n" + table + "trailer\n<</Size " + size +
           "\n/Root 2 0 R\n/Info 1 0 R>>\nstartxref\n" + start + "\n%%EOF\n";
  }
};

inline std::vector<std::byte> bytesOf(std::string_view text) {
  const auto bytes = std::as_bytes(std::span(text));
  return {bytes.begin(), bytes.end()};
}

inline std::string_view textOf(const std::vector<std::byte>& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace orvane::test
