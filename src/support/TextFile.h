// Reading text at the edges: bytes from a file or standard input, decoded to
// wide text by their byte order mark (UTF-8 with or without BOM, UTF-16 LE
// with BOM, UTF-16 BE with BOM).
#pragma once

#include <string>
#include <string_view>

#include "support/WideString.h"

namespace mv {

WideString DecodeText(std::string_view bytes);
// Reads a whole file ("-" reads standard input). Raises EmvQueryBuilderError
// naming the file when it cannot be read.
std::string ReadAllBytes(const std::string& path);
WideString ReadTextFile(const std::string& path);

}  // namespace mv
