#include "cli/json_writer.h"

#include <gtest/gtest.h>

namespace pairwell {
namespace {

TEST(JsonWriterTest, NestedValuesAreSeparatedByCommas) {
  JsonWriter json;
  json.BeginObject()
      .Key("a")
      .Number(-1)
      .Key("b")
      .BeginArray()
      .Bool(true)
      .Null()
      .BeginObject()
      .EndObject()
      .EndArray()
      .Key("c")
      .String("x")
      .EndObject();
  EXPECT_EQ(json.text(), "{\"a\":-1,\"b\":[true,null,{}],\"c\":\"x\"}");
}

TEST(JsonWriterTest, StringsAreEscaped) {
  JsonWriter json;
  json.String("q\"b\\n\nr\rt\t\x01 caf\xc3\xa9");
  EXPECT_EQ(json.text(), "\"q\\\"b\\\\n\\nr\\rt\\t\\u0001 caf\xc3\xa9\"");
}

TEST(JsonWriterTest, BytesThatAreNotUtf8AreEscapedToRoundTrip) {
  JsonWriter json;
  // Latin-1 e-acute, a lone continuation byte, an overlong slash, a
  // surrogate, a code above U+10FFFF and a cut-off sequence at the end.
  json.String("caf\xe9 \x80 \xc0\xaf \xed\xa0\x80 \xf4\x90\x80\x80 ok\xe2\x82");
  EXPECT_EQ(json.text(),
            "\"caf\\udce9 \\udc80 \\udcc0\\udcaf \\udced\\udca0\\udc80 "
            "\\udcf4\\udc90\\udc80\\udc80 ok\\udce2\\udc82\"");
}

TEST(JsonWriterTest, WellFormedUtf8IsKeptAsItIs) {
  JsonWriter json;
  json.String("\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\xef\xbf\xbf\x7f");
  EXPECT_EQ(json.text(),
            "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80\xef\xbf\xbf\x7f\"");
}

}  // namespace
}  // namespace pairwell
