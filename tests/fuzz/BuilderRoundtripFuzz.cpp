// Text through the query builder: any text that the builder takes comes
// back as text that
// - the builder takes again without a change (no OnSQLUpdated),
// - a second, fresh builder reads to the same text (a fixed point),
// and nothing is left behind when the builders go (the sanitizers watch).
// Refused text is the parser's business, not a failure.
#include <string_view>

#include "FuzzTarget.h"
#include "component/QueryBuilder.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"

using namespace mv;

namespace {

constexpr size_t kMaxInput = 4096;

TmvOwned<TmvQueryBuilder> NewBuilder(TmvBaseSyntaxProvider* provider) {
  TmvOwned<TmvQueryBuilder> builder = TmvCreate<TmvQueryBuilder>();
  builder->SetSyntaxProvider(provider);
  for (const char16_t* name : {u"t", u"u"}) {
    TmvMetadataTable* table = builder->MetadataContainer()->AddTable(name);
    for (const char16_t* field : {u"x", u"k"}) table->GetFields()->AddField(WideStringView(field));
  }
  return builder;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  static TmvOwned<TmvSQL92SyntaxProvider> provider = [] {
    InitializeEngine();
    return TmvCreate<TmvSQL92SyntaxProvider>();
  }();
  const WideString text = DecodeText(std::string_view(reinterpret_cast<const char*>(data), size));
  TmvOwned<TmvQueryBuilder> builder = NewBuilder(provider.get());
  WideString once;
  try {
    builder->SetSql(text);
    once = builder->GetSql();
  } catch (const Exception&) {
    return 0;
  }
  if (builder->SleepMode()) return 0;
  int updates = 0;
  builder->OnSQLUpdated = [&updates](TmvQueryModelHost*) { ++updates; };
  builder->SetSql(once);
  MV_FUZZ_CHECK(updates == 0, UTF8Encode(once));
  TmvOwned<TmvQueryBuilder> second = NewBuilder(provider.get());
  WideString twice;
  try {
    second->SetSql(once);
    twice = second->GetSql();
  } catch (const Exception& error) {
    mvfuzz::Fail("the builder's text reads again", UTF8Encode(once) + "\n" + UTF8Encode(error.Message()));
  }
  MV_FUZZ_CHECK(twice == once, UTF8Encode(text) + "\n" + UTF8Encode(once) + "\n" + UTF8Encode(twice));
  return 0;
}
