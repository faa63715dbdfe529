// The Windows .reg export format ("Windows Registry Editor Version 5.00"): read leniently
// (a line that cannot be understood is skipped and counted, never fatal), written as
// the registry editor writes it.
#include "RegistryHive.h"

#include "Internal.h"
#include "platform/WideText.h"

#include <cstdio>
#include <cstring>

namespace tarnix::posix {

namespace {

const char kHeader[] = "Windows Registry Editor Version 5.00";
const char kOldHeader[] = "REGEDIT4";

WString Decode(const std::string& bytes, bool* wasUtf16) {
  *wasUtf16 = bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
              static_cast<unsigned char>(bytes[1]) == 0xFE;
  if (*wasUtf16) {
    WString text;
    text.reserve(bytes.size() / 2);
    for (size_t k = 2; k + 1 < bytes.size(); k += 2) {
      text.push_back(static_cast<WCHAR>(static_cast<unsigned char>(bytes[k]) |
                                        (static_cast<unsigned char>(bytes[k + 1]) << 8)));
    }
    return text;
  }
  const bool bom = bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0;
  return Utf8ToWide(bom ? bytes.substr(3) : bytes);
}

bool IsSpace(WCHAR c) { return c == u' ' || c == u'\t'; }

WString Trim(const WString& text) {
  size_t begin = 0, end = text.size();
  while (begin < end && IsSpace(text[begin])) ++begin;
  while (end > begin && (IsSpace(text[end - 1]) || text[end - 1] == u'\r')) --end;
  return text.substr(begin, end - begin);
}

std::vector<WString> SplitLines(const WString& text) {
  std::vector<WString> lines;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find(u'\n', start);
    if (end == WString::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

// Reads a quoted text starting at text[pos] == '"'; \\ and \" are escapes, any other
// backslash stays as it is. Leaves pos after the closing quote.
bool ReadQuoted(const WString& text, size_t* pos, WString* out) {
  out->clear();
  for (size_t k = *pos + 1; k < text.size(); ++k) {
    const WCHAR c = text[k];
    if (c == u'"') {
      *pos = k + 1;
      return true;
    }
    if (c == u'\\' && k + 1 < text.size() && (text[k + 1] == u'\\' || text[k + 1] == u'"')) {
      out->push_back(text[++k]);
    } else {
      out->push_back(c);
    }
  }
  return false;
}

int Hex(WCHAR c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

bool ReadHexNumber(const WString& text, uint32_t* out, size_t maxDigits) {
  if (text.empty() || text.size() > maxDigits) return false;
  uint32_t value = 0;
  for (WCHAR c : text) {
    const int d = Hex(c);
    if (d < 0) return false;
    value = value * 16 + static_cast<uint32_t>(d);
  }
  *out = value;
  return true;
}

// "aa,bb,cc" with blanks anywhere and an optional trailing comma.
bool ReadHexBytes(const WString& text, std::vector<BYTE>* out) {
  out->clear();
  WString digits;
  auto flush = [&]() {
    if (digits.empty()) return true;
    uint32_t byte = 0;
    if (!ReadHexNumber(digits, &byte, 2)) return false;
    out->push_back(static_cast<BYTE>(byte));
    digits.clear();
    return true;
  };
  for (WCHAR c : text) {
    if (IsSpace(c) || c == u'\r') continue;
    if (c == u',') {
      if (digits.empty() || !flush()) return false;
    } else {
      digits.push_back(c);
    }
  }
  return flush();
}

bool StartsWith(const WString& text, size_t pos, const char* prefix) {
  for (size_t k = 0; prefix[k]; ++k) {
    if (pos + k >= text.size() ||
        FoldCase(text[pos + k]) != FoldCase(static_cast<WCHAR>(prefix[k])))
      return false;
  }
  return true;
}

// The "=" that counts is the one after the value's name: a name may hold one of its own.
bool IsHexValueLine(const WString& line) {
  if (line.empty() || (line[0] != u'"' && line[0] != u'@')) return false;
  size_t k = 0;
  WString name;
  if (line[0] == u'@') {
    k = 1;
  } else if (!ReadQuoted(line, &k, &name)) {
    return false;
  }
  while (k < line.size() && IsSpace(line[k])) ++k;
  if (k >= line.size() || line[k] != u'=') return false;
  ++k;
  while (k < line.size() && IsSpace(line[k])) ++k;
  return StartsWith(line, k, "hex");
}

class Parser {
 public:
  explicit Parser(RegHive& hive) : hive_(hive) {}

  size_t Run(const WString& text) {
    std::vector<WString> lines = SplitLines(text);
    bool sawHeader = false;
    for (size_t k = 0; k < lines.size(); ++k) {
      WString line = Trim(lines[k]);
      // A hex list may go on over several lines, each but the last ending in a backslash.
      while (IsHexValueLine(line) && !line.empty() && line.back() == u'\\' &&
             k + 1 < lines.size()) {
        line.pop_back();
        line += Trim(lines[++k]);
      }
      if (line.empty() || line[0] == u';') continue;
      if (!sawHeader && (line == Utf8ToWide(kHeader) || line == Utf8ToWide(kOldHeader))) {
        sawHeader = true;
        continue;
      }
      if (!ParseLine(line)) ++skipped_;
    }
    return skipped_;
  }

 private:
  bool ParseLine(const WString& line) {
    if (line[0] == u'[') return ParseSection(line);
    if (line[0] == u'"' || line[0] == u'@') return current_ && ParseValue(line);
    return false;
  }

  bool ParseSection(const WString& line) {
    current_.reset();
    if (line.back() != u']') return false;
    WString path = line.substr(1, line.size() - 2);
    const bool remove = !path.empty() && path[0] == u'-';
    if (remove) path.erase(0, 1);
    std::vector<WString> parts = RegHive::SplitPath(path.c_str());
    if (parts.empty()) return false;
    std::shared_ptr<RegNode> node = RootNamed(parts[0]);
    if (!node) return false;
    std::shared_ptr<RegNode> parent;
    for (size_t k = 1; k < parts.size(); ++k) {
      std::shared_ptr<RegNode> child = node->FindSubkey(parts[k]);
      if (!child) {
        if (remove) return true;  // nothing to delete
        child = node->AddSubkey(parts[k], false);
      }
      parent = node;
      node = child;
    }
    if (remove) {
      if (parent) parent->RemoveSubkey(node.get());
      return true;
    }
    current_ = node;
    return true;
  }

  std::shared_ptr<RegNode> RootNamed(const WString& name) {
    if (EqualsFolded(name, Utf8ToWide("HKEY_CLASSES_ROOT")) ||
        EqualsFolded(name, Utf8ToWide("HKCR")))
      return hive_.Root(HKEY_CLASSES_ROOT);
    for (const auto& root : RegRoots()) {
      if (EqualsFolded(name, Utf8ToWide(root.name)) ||
          (root.shortName && EqualsFolded(name, Utf8ToWide(root.shortName))))
        return hive_.Root(root.handle);
    }
    return nullptr;
  }

  bool ParseValue(const WString& line) {
    WString name;
    size_t pos = 0;
    if (line[0] == u'@') {
      pos = 1;
    } else if (!ReadQuoted(line, &pos, &name)) {
      return false;
    }
    while (pos < line.size() && IsSpace(line[pos])) ++pos;
    if (pos >= line.size() || line[pos] != u'=') return false;
    ++pos;
    while (pos < line.size() && IsSpace(line[pos])) ++pos;
    const WString data = line.substr(pos);
    if (data == u"-") {
      current_->DeleteValue(name);
      return true;
    }
    if (!data.empty() && data[0] == u'"') {
      size_t end = 0;
      WString text;
      if (!ReadQuoted(data, &end, &text) || !Trim(data.substr(end)).empty()) return false;
      text.push_back(0);
      current_->SetValue(name, REG_SZ, reinterpret_cast<const BYTE*>(text.data()),
                         text.size() * sizeof(WCHAR));
      return true;
    }
    if (StartsWith(data, 0, "dword:")) {
      uint32_t value = 0;
      if (!ReadHexNumber(data.substr(6), &value, 8)) return false;
      current_->SetValue(name, REG_DWORD, reinterpret_cast<const BYTE*>(&value), sizeof(value));
      return true;
    }
    if (StartsWith(data, 0, "hex")) return ParseHex(name, data);
    return false;
  }

  // hex:aa,bb (REG_BINARY) or hex(N):aa,bb (type N, in hexadecimal).
  bool ParseHex(const WString& name, const WString& data) {
    uint32_t type = REG_BINARY;
    size_t colon = 3;
    if (data.size() > 3 && data[3] == u'(') {
      const size_t close = data.find(u')', 4);
      if (close == WString::npos || !ReadHexNumber(data.substr(4, close - 4), &type, 8))
        return false;
      colon = close + 1;
    }
    if (colon >= data.size() || data[colon] != u':') return false;
    std::vector<BYTE> bytes;
    if (!ReadHexBytes(data.substr(colon + 1), &bytes)) return false;
    current_->SetValue(name, type, bytes.data(), bytes.size());
    return true;
  }

  RegHive& hive_;
  std::shared_ptr<RegNode> current_;
  size_t skipped_ = 0;
};

// ---- Writing

std::string Quote(const WString& text) {
  std::string out = "\"";
  for (char c : WideToUtf8(text)) {
    if (c == '\\' || c == '"') out.push_back('\\');
    out.push_back(c);
  }
  return out + "\"";
}

// A REG_SZ can be written as quoted text only when it reads back byte for byte the same.
bool QuotableText(const RegValue& value, WString* text) {
  if (value.type != REG_SZ || value.data.size() < 2 || value.data.size() % 2) return false;
  text->assign(value.data.size() / 2 - 1, WCHAR());
  if (!text->empty()) std::memcpy(&(*text)[0], value.data.data(), text->size() * sizeof(WCHAR));
  if (value.data[value.data.size() - 1] != 0 || value.data[value.data.size() - 2] != 0)
    return false;
  for (WCHAR c : *text) {
    if (c == 0 || c == u'\r' || c == u'\n' || (c >= 0xD800 && c <= 0xDFFF)) return false;
  }
  return true;
}

std::string HexList(const std::string& prefix, const std::vector<BYTE>& data) {
  std::string out = prefix;
  size_t column = out.size();
  char byte[4];
  for (size_t k = 0; k < data.size(); ++k) {
    std::snprintf(byte, sizeof(byte), "%02x", data[k]);
    out += byte;
    column += 2;
    if (k + 1 < data.size()) {
      out += ',';
      ++column;
      if (column > 76) {
        out += "\\\n  ";
        column = 2;
      }
    }
  }
  return out;
}

std::string ValueLine(const RegValue& value) {
  std::string line = value.name.empty() ? "@=" : Quote(value.name) + "=";
  WString text;
  if (QuotableText(value, &text)) return line + Quote(text);
  if (value.type == REG_DWORD && value.data.size() == 4) {
    uint32_t number = 0;
    std::memcpy(&number, value.data.data(), 4);
    char digits[16];
    std::snprintf(digits, sizeof(digits), "dword:%08x", number);
    return line + digits;
  }
  if (value.type == REG_BINARY) return HexList(line + "hex:", value.data);
  char prefix[24];
  std::snprintf(prefix, sizeof(prefix), "hex(%x):", static_cast<unsigned>(value.type));
  return HexList(line + prefix, value.data);
}

void WriteKey(const RegNode& node, const std::string& path, bool isRoot, std::string* out) {
  if (node.isVolatile) return;
  if (!isRoot || !node.values.empty()) {
    *out += "[" + path + "]\n";
    for (const RegValue& value : node.values) *out += ValueLine(value) + "\n";
    *out += "\n";
  }
  for (const auto& child : node.subkeys)
    WriteKey(*child, path + "\\" + WideToUtf8(child->name), false, out);
}

}  // namespace

size_t ParseRegText(const std::string& bytes, RegHive& hive, bool* wasUtf16) {
  return Parser(hive).Run(Decode(bytes, wasUtf16));
}

std::string FormatRegText(RegHive& hive, bool asUtf16) {
  std::string text = std::string(kHeader) + "\n\n";
  for (const auto& root : RegRoots()) {
    if (std::shared_ptr<RegNode> node = hive.Root(root.handle))
      WriteKey(*node, root.name, true, &text);
  }
  if (!asUtf16) return text;
  const WString wide = Utf8ToWide(text);
  std::string bytes = "\xFF\xFE";
  for (WCHAR c : wide) {
    if (c == u'\n') {
      bytes += '\r';
      bytes += '\0';
    }
    bytes += static_cast<char>(c & 0xFF);
    bytes += static_cast<char>(c >> 8);
  }
  return bytes;
}

}  // namespace tarnix::posix
