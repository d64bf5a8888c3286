// The byte-level edges: decoding input text by its byte order mark, UTF-8
// both ways, and the run-length code of saved layouts. Decoding may refuse
// an input with the engine's exception; what it accepts round-trips.
#include <string>
#include <string_view>

#include "FuzzTarget.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "support/TextHelpers.h"
#include "support/WideString.h"

using namespace mv;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);

  // Any bytes encode to pairs that decode to the same bytes.
  const std::string encoded = RLEEncode(bytes);
  MV_FUZZ_CHECK(RLEDecode(encoded) == bytes, "RLE of " + std::to_string(size) + " bytes");
  // Any text decodes or is refused cleanly; what decodes encodes again.
  try {
    const std::string decoded = RLEDecode(bytes);
    MV_FUZZ_CHECK(RLEDecode(RLEEncode(decoded)) == decoded, "RLE of decoded text");
  } catch (const Exception&) {
  }

  try {
    const WideString text = DecodeText(bytes);
    // Text without lone surrogates survives UTF-8 both ways.
    bool paired = true;
    for (size_t i = 0; i < text.size() && paired; ++i) {
      const char16_t c = text[i];
      if (c >= 0xD800 && c <= 0xDBFF) {
        paired = i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF;
        ++i;
      } else if (c >= 0xDC00 && c <= 0xDFFF) {
        paired = false;
      }
    }
    if (paired) MV_FUZZ_CHECK(UTF8Decode(UTF8Encode(text)) == text, "UTF-8 round trip");
  } catch (const Exception&) {
  }
  return 0;
}
