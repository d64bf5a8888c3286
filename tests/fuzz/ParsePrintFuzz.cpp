// Parsing and printing under every dialect of the build. A first byte below
// 21 picks a dialect by its place in the fixed table below (the order of the
// table of providers, then the automatic provider) and is not part of the
// text, so that a seed keeps its dialect as dialects are added; a dialect
// not in this build reads it under SQL-92, as does any other input. Any input either fails with the engine's own exceptions or parses;
// what parses keeps two promises:
// - its one-line print parses again to the same print;
// - its formatted text formats again to the same text.
// Crashes, hangs, sanitizer reports and other exceptions are failures too.
#include <memory>
#include <string_view>
#include <vector>

#include "FuzzTarget.h"
#include "dialects/EngineInit.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "frontend/SyntaxProvidersList.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

// Longer inputs only slow the search down; the shapes that matter are small.
constexpr size_t kMaxInput = 8192;

// The providers a first byte names, by class.
constexpr const char* kDialectByByte[] = {
    "TmvSQL92SyntaxProvider",    "TmvSQL89SyntaxProvider",     "TmvSQL2003SyntaxProvider",
    "TmvMSSQLSyntaxProvider",    "TmvMSSQLCESyntaxProvider",   "TmvOracleSyntaxProvider",
    "TmvMYSQLSyntaxProvider",    "TmvPGSQLSyntaxProvider",     "TmvIBSyntaxProvider",
    "TmvFirebirdSyntaxProvider", "TmvDB2SyntaxProvider",       "TmvInformixSyntaxProvider",
    "TmvMSAccessSyntaxProvider", "TmvSybaseSyntaxProvider",    "TmvSQLiteSyntaxProvider",
    "TmvTeradataSyntaxProvider", "TmvNetezzaSyntaxProvider",   "TmvAdvantageSyntaxProvider",
    "TmvMimerSQLSyntaxProvider", "TmvUniversalSyntaxProvider", "TmvAutoSyntaxProvider",
};

// One context per dialect of the table, each with its own provider; SQL-92's
// where the build has no such dialect.
struct Engine {
  struct Dialect {
    TmvOwned<TmvBaseSyntaxProvider> provider;
    TmvBaseSQLContext context;
  };

  Engine() {
    InitializeEngine();
    for (const char* name : kDialectByByte) {
      const TmvSyntaxProviderClass* c = SyntaxProvidersList().FindClassByClassName(name);
      if (!c) c = SyntaxProvidersList().FindClassByClassName(kDialectByByte[0]);
      auto& dialect = *dialects.emplace_back(std::make_unique<Dialect>());
      dialect.provider.reset(c->CreateRaw());
      dialect.context.SetSyntaxProvider(dialect.provider.get());
    }
  }
  ~Engine() {
    for (auto& dialect : dialects) dialect->context.SetSyntaxProvider(nullptr);
  }

  std::vector<std::unique_ptr<Dialect>> dialects;
};

Engine& TheEngine() {
  static Engine engine;
  return engine;
}

std::string Show(const WideString& a, const WideString& b) {
  return "--- first\n" + UTF8Encode(a) + "\n--- second\n" + UTF8Encode(b);
}

// The print of `sql` through `builder`, after a parse that must succeed.
WideString Reprint(TmvBaseSQLContext& context, const WideString& sql, TSQLBuilder& builder) {
  try {
    return context.ParseSelect(sql)->SimpleSQL(builder);
  } catch (const Exception& e) {
    mvfuzz::Fail("the engine's own print parses again", std::string(context.SyntaxProvider()->ClassName()) + "\n" +
                                                            UTF8Encode(sql) + "\n--- error\n" + UTF8Encode(e.Message()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Engine& engine = TheEngine();
  size_t dialect = 0;
  if (size > 0 && data[0] < engine.dialects.size()) {
    dialect = data[0];
    ++data;
    --size;
  }
  TmvBaseSQLContext& context = engine.dialects[dialect]->context;
  WideString sql;
  TmvOwned<TSQLSelectStatement> tree;
  try {
    sql = DecodeText(std::string_view(reinterpret_cast<const char*>(data), size));
    tree = context.ParseSelect(sql);
  } catch (const Exception&) {
    return 0;  // a syntax error or undecodable text: reported, not a fault
  }

  const std::string under = std::string(engine.dialects[dialect]->provider->ClassName()) + "\n";
  TSQLBuilderFast fast;
  const WideString line = tree->SimpleSQL(fast);
  const WideString lineAgain = Reprint(context, line, fast);
  MV_FUZZ_CHECK(lineAgain == line, under + Show(line, lineAgain));

  TSQLBuilderPiped piped;
  const WideString formatted = tree->SimpleSQL(piped);
  const WideString formattedAgain = Reprint(context, formatted, piped);
  MV_FUZZ_CHECK(formattedAgain == formatted, under + Show(formatted, formattedAgain));
  return 0;
}
