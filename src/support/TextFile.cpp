#include "support/TextFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "support/Exceptions.h"

namespace mv {

namespace {

WideString DecodeUTF16(std::string_view bytes, bool bigEndian) {
  WideString out;
  out.reserve(bytes.size() / 2);
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    auto lo = static_cast<unsigned char>(bytes[i + (bigEndian ? 1 : 0)]);
    auto hi = static_cast<unsigned char>(bytes[i + (bigEndian ? 0 : 1)]);
    out += static_cast<char16_t>(lo | (hi << 8));
  }
  if (bytes.size() % 2) out += char16_t(0xFFFD);  // a dangling byte
  return out;
}

}  // namespace

WideString DecodeText(std::string_view bytes) {
  if (bytes.size() >= 3 && bytes.substr(0, 3) == "\xEF\xBB\xBF") return UTF8Decode(bytes.substr(3));
  if (bytes.size() >= 2 && bytes.substr(0, 2) == "\xFF\xFE") return DecodeUTF16(bytes.substr(2), false);
  if (bytes.size() >= 2 && bytes.substr(0, 2) == "\xFE\xFF") return DecodeUTF16(bytes.substr(2), true);
  return UTF8Decode(bytes);
}

std::string ReadAllBytes(const std::string& path) {
  if (path == "-") {
    std::ostringstream buffer;
    buffer << std::cin.rdbuf();
    return buffer.str();
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw EmvQueryBuilderError(UTF8Decode(path),
                               UTF8Decode("Cannot open file \"" + path + "\": " + std::strerror(errno)));
  }
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

WideString ReadTextFile(const std::string& path) { return DecodeText(ReadAllBytes(path)); }

}  // namespace mv
