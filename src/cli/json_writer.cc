#include "cli/json_writer.h"

#include <cstdio>

namespace pairwell {

void JsonWriter::BeforeValue() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!has_value_.empty()) {
    if (has_value_.back()) text_ += ',';
    has_value_.back() = true;
  }
}

void JsonWriter::Quote(const std::string& value) {
  text_ += '"';
  for (const char c : value) {
    switch (c) {
      case '"':
        text_ += "\\\"";
        break;
      case '\\':
        text_ += "\\\\";
        break;
      case '\n':
        text_ += "\\n";
        break;
      case '\r':
        text_ += "\\r";
        break;
      case '\t':
        text_ += "\\t";
        break;
      default:
        if (static_cast<unsigned char>(c) < 0x20) {
          char escape[8];
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          text_ += escape;
        } else {
          text_ += c;
        }
    }
  }
  text_ += '"';
}

JsonWriter& JsonWriter::BeginObject() {
  BeforeValue();
  text_ += '{';
  has_value_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::EndObject() {
  has_value_.pop_back();
  text_ += '}';
  return *this;
}

JsonWriter& JsonWriter::BeginArray() {
  BeforeValue();
  text_ += '[';
  has_value_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::EndArray() {
  has_value_.pop_back();
  text_ += ']';
  return *this;
}

JsonWriter& JsonWriter::Key(const std::string& key) {
  BeforeValue();
  Quote(key);
  text_ += ':';
  after_key_ = true;
  return *this;
}

JsonWriter& JsonWriter::String(const std::string& value) {
  BeforeValue();
  Quote(value);
  return *this;
}

JsonWriter& JsonWriter::Number(std::int64_t value) {
  BeforeValue();
  text_ += std::to_string(value);
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  BeforeValue();
  text_ += value ? "true" : "false";
  return *this;
}

JsonWriter& JsonWriter::Null() {
  BeforeValue();
  text_ += "null";
  return *this;
}

}  // namespace pairwell
