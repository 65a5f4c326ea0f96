#include "cli/json_writer.h"

#include <cstdio>

namespace pairwell {

namespace {

// The length of the well-formed UTF-8 sequence at text[i], or 0: overlong
// forms, surrogates and codes above U+10FFFF are not well formed.
std::size_t Utf8SequenceLength(const std::string& text, std::size_t i) {
  const auto byte = [&](std::size_t k) {
    return k < text.size() ? static_cast<unsigned char>(text[k]) : 0u;
  };
  const unsigned lead = byte(i);
  const auto continuation = [&](std::size_t k, unsigned low = 0x80,
                                unsigned high = 0xBF) {
    return byte(k) >= low && byte(k) <= high;
  };
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return continuation(i + 1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : 0xBF;
    return continuation(i + 1, low, high) && continuation(i + 2) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
    return continuation(i + 1, low, high) && continuation(i + 2) &&
                   continuation(i + 3)
               ? 4
               : 0;
  }
  return 0;
}

}  // namespace

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
  for (std::size_t i = 0; i < value.size();) {
    const unsigned char c = static_cast<unsigned char>(value[i]);
    const std::size_t length = Utf8SequenceLength(value, i);
    char escape[8];
    if (length == 0) {
      std::snprintf(escape, sizeof escape, "\\udc%02x", c);
      text_ += escape;
      ++i;
      continue;
    }
    if (length > 1) {
      text_.append(value, i, length);
      i += length;
      continue;
    }
    ++i;
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
        if (c < 0x20) {
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          text_ += escape;
        } else {
          text_ += static_cast<char>(c);
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
