// Language files from any bytes: loading never fails, reads of long values
// and lists stay within their defaults, and what is saved loads back to the
// same saved bytes.
#include <string>
#include <string_view>

#include "FuzzTarget.h"
#include "localization/LanguageSources.h"

using namespace mv;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TmvQBLanguageSourceString language(u"fuzz", u"");
  language.IniFile().LoadFromBytes(bytes);
  language.ReadParams();

  const std::string saved = language.IniFile().SaveToBytes();
  TmvWideStringMemIniFile again;
  again.LoadFromBytes(saved);
  MV_FUZZ_CHECK(again.SaveToBytes() == saved, "save, load and save of " + std::to_string(size) + " bytes");

  const TmvWideStrings& sections = language.IniFile().Sections();
  for (int i = 0; i < sections.Count(); ++i) {
    const TmvWideStrings* lines = sections.Objects(i);
    for (int j = 0; j < lines->Count() && j < 8; ++j) {
      WideString value;
      language.ReadWideString(sections.Strings(i), lines->Names(j), value, u"");
      std::vector<WideString> list;
      language.ReadStrings(sections.Strings(i), lines->Names(j), {u"a", u"b"}, list);
      MV_FUZZ_CHECK(list.size() == 2, "list of two defaults");
    }
  }
  return 0;
}
