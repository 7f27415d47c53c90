#include "orvane/report/pdf/browser/devtools_message.h"

#include <gtest/gtest.h>

namespace orvane::DevToolsMessage {
namespace {

std::string decoded(std::string_view text) {
  std::vector<std::byte> bytes;
  if (!appendBase64(bytes, text)) return "(refused)";
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(DevToolsMessage, WritesCommands) {
  EXPECT_EQ(text(7, {.method = "Browser.getVersion"}),
            R"({"id":7,"method":"Browser.getVersion","params":{}})");
  EXPECT_EQ(text(8, {.method = "Page.x", .parameters = R"({"a":1})", .session = "A\"B"}),
            R"({"id":8,"method":"Page.x","params":{"a":1},"sessionId":"A\"B"})");
}

TEST(DevToolsMessage, ReadsHeadings) {
  auto found = heading(R"({"id":3,"result":{"id":9,"method":"no"},"sessionId":"S"})");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->id, 3);
  EXPECT_EQ(found->session, "S");
  EXPECT_EQ(found->method, "");
  EXPECT_EQ(found->error, std::nullopt);

  found = heading(R"({"error":{"code":-32601,"message":"'X' wasn't found","data":[]},"id":4})");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->error, "'X' wasn't found");

  found = heading(R"({"method":"Page.loaded","params":{}})");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->id, std::nullopt);
  EXPECT_EQ(found->method, "Page.loaded");
}

TEST(DevToolsMessage, TakesNothingElseForAMessage) {
  for (const char* text : {"", "[]", "{}", "{", "null", R"({"id":"3"})", R"({"id":1} x)",
                           R"({"method":5})", R"({"id":1,"error":"text"})"})
    EXPECT_EQ(heading(text).has_value(), false) << text;
}

TEST(DevToolsMessage, FindsValuesByTheirKeys) {
  constexpr std::string_view message =
      R"({"id":1,"result":{"other":[1,{"x":2}],"frame":{"id":"é","eof":true,"v":[1.5,-2]}}})";
  EXPECT_EQ(stringAt(message, {"result", "frame", "id"}), "é");
  EXPECT_EQ(boolAt(message, {"result", "frame", "eof"}), true);
  EXPECT_EQ(numbersAt(message, {"result", "frame", "v"}), (std::vector<double>{1.5, -2}));
}

TEST(DevToolsMessage, FindsNothingWhereNothingOfThatTypeIs) {
  constexpr std::string_view message = R"({"result":{"a":1,"b":["x"]}})";
  EXPECT_EQ(stringAt(message, {"result", "a"}), std::nullopt);
  EXPECT_EQ(stringAt(message, {"result", "c"}), std::nullopt);
  EXPECT_EQ(stringAt(message, {"result", "a", "c"}), std::nullopt);
  EXPECT_EQ(boolAt(message, {"result", "a"}), std::nullopt);
  EXPECT_EQ(numbersAt(message, {"result", "b"}), std::nullopt);
  EXPECT_EQ(numbersAt("{", {"result"}), std::nullopt);
}

TEST(DevToolsMessage, QuotesAnyText) {
  EXPECT_EQ(quoted("a\"\\\n</script>\xFF"), "\"a\\\"\\\\\\n<\\/script>\xEF\xBF\xBD\"");
  // A NUL would end the message.
  EXPECT_EQ(quoted(std::string_view("a\0b", 3)), "\"a\\u0000b\"");
}

// RFC 4648, section 10.
TEST(DevToolsMessage, DecodesBase64) {
  EXPECT_EQ(decoded(""), "");
  EXPECT_EQ(decoded("Zg=="), "f");
  EXPECT_EQ(decoded("Zm8="), "fo");
  EXPECT_EQ(decoded("Zm9v"), "foo");
  EXPECT_EQ(decoded("Zm9vYmFy"), "foobar");
  EXPECT_EQ(decoded("+/+/"), "\xFB\xFF\xBF");
}

TEST(DevToolsMessage, RefusesWhatIsNoBase64) {
  for (const char* text : {"Z", "Zg", "Zg=", "Z===", "Zm9*", "Zm9v\n", "=Zg=", "Zm-_"})
    EXPECT_EQ(decoded(text), "(refused)") << text;
}

TEST(DevToolsMessage, AppendsDecodedBytes) {
  std::vector<std::byte> bytes = {std::byte{1}};
  ASSERT_TRUE(appendBase64(bytes, "Ag=="));
  EXPECT_EQ(bytes, (std::vector<std::byte>{std::byte{1}, std::byte{2}}));
}

}  // namespace
}  // namespace orvane::DevToolsMessage
