// Binding parsed statements to a small catalog under SQL-92. Whatever
// parses binds without an error of its own, and binding keeps two promises:
// - the bound print parses, and binds, to the same print again;
// - a second pass over the same tree (which first gives every bound name
//   its prefix back) comes to the same print.
// Crashes, hangs, sanitizer reports and other exceptions are failures too.
#include <string_view>

#include "FuzzTarget.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "tree/SelectStatement.h"

using namespace mv;

namespace {

constexpr size_t kMaxInput = 8192;

struct Engine {
  Engine() {
    InitializeEngine();
    provider = TmvCreate<TmvSQL92SyntaxProvider>();
    context.SetSyntaxProvider(provider.get());
    container = TmvCreate<TmvMetadataContainer>(nullptr, &context);
    context.SetMetadataContainer(container.get());
    container->SetWorkOffline(true);
    // Tables with shared column names, a schema-qualified one and an alternate name.
    AddTable(u"t", {u"x", u"k", u"y"});
    AddTable(u"u", {u"x", u"k"});
    AddTable(u"s.v", {u"x", u"\"Mixed Case\""})->SetAltName(u"Vee");
  }
  ~Engine() {
    context.SetMetadataContainer(nullptr);
    container.reset();
    context.SetSyntaxProvider(nullptr);
  }
  TmvMetadataTable* AddTable(const char16_t* name, std::initializer_list<const char16_t*> fields) {
    TmvMetadataTable* table = container->AddTable(name);
    for (const char16_t* field : fields) table->GetFields()->AddField(WideStringView(field));
    return table;
  }

  TmvOwned<TmvSQL92SyntaxProvider> provider;
  TmvBaseSQLContext context;
  TmvOwned<TmvMetadataContainer> container;
};

Engine& TheEngine() {
  static Engine engine;
  return engine;
}

WideString Print(TastNode* node) {
  TSQLBuilderFast builder;
  return node->SimpleSQL(builder);
}

std::string Show(const WideString& a, const WideString& b) {
  return "--- first\n" + UTF8Encode(a) + "\n--- second\n" + UTF8Encode(b);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > kMaxInput) return 0;
  Engine& engine = TheEngine();
  TmvOwned<TSQLSelectStatement> tree;
  try {
    tree = engine.context.ParseSelect(DecodeText(std::string_view(reinterpret_cast<const char*>(data), size)));
  } catch (const Exception&) {
    return 0;  // not a statement: the parser's business
  }
  tree->PrepareAndFixupRecursive();
  const WideString bound = Print(tree.get());

  TmvOwned<TSQLSelectStatement> again;
  try {
    again = engine.context.ParseSelect(bound);
  } catch (const Exception& e) {
    mvfuzz::Fail("the bound print parses again", UTF8Encode(bound) + "\n--- error\n" + UTF8Encode(e.Message()));
  }
  again->PrepareAndFixupRecursive();
  MV_FUZZ_CHECK(Print(again.get()) == bound, Show(bound, Print(again.get())));

  tree->PrepareAndFixupRecursive();
  MV_FUZZ_CHECK(Print(tree.get()) == bound, Show(bound, Print(tree.get())));
  return 0;
}
