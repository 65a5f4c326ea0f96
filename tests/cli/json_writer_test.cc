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

}  // namespace
}  // namespace pairwell
