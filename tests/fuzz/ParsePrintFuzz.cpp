// Parsing and printing under SQL-92. Any input either fails with the
// engine's own exceptions or parses; what parses keeps two promises:
// - its one-line print parses again to the same print;
// - its formatted text formats again to the same text.
// Crashes, hangs, sanitizer reports and other exceptions are failures too.
#include <memory>
#include <string_view>

#include "FuzzTarget.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "frontend/SQLError.h"
#include "sqlgen/SQLBuilderPiped.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

// Longer inputs only slow the search down; the shapes that matter are small.
constexpr size_t kMaxInput = 8192;

struct Engine {
  Engine() {
    InitializeEngine();
    provider = TmvCreate<TmvSQL92SyntaxProvider>();
    context.SetSyntaxProvider(provider.get());
  }
  ~Engine() { context.SetSyntaxProvider(nullptr); }

  TmvOwned<TmvSQL92SyntaxProvider> provider;
  TmvBaseSQLContext context;
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
    mvfuzz::Fail("the engine's own print parses again", UTF8Encode(sql) + "\n--- error\n" + UTF8Encode(e.Message()));
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Engine& engine = TheEngine();
  WideString sql;
  TmvOwned<TSQLSelectStatement> tree;
  try {
    sql = DecodeText(std::string_view(reinterpret_cast<const char*>(data), size));
    tree = engine.context.ParseSelect(sql);
  } catch (const Exception&) {
    return 0;  // a syntax error or undecodable text: reported, not a fault
  }

  TSQLBuilderFast fast;
  const WideString line = tree->SimpleSQL(fast);
  const WideString lineAgain = Reprint(engine.context, line, fast);
  MV_FUZZ_CHECK(lineAgain == line, Show(line, lineAgain));

  TSQLBuilderPiped piped;
  const WideString formatted = tree->SimpleSQL(piped);
  const WideString formattedAgain = Reprint(engine.context, formatted, piped);
  MV_FUZZ_CHECK(formattedAgain == formatted, Show(formatted, formattedAgain));
  return 0;
}
