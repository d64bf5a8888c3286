// Binding parsed statements to a small catalog under SQL-92. Whatever
// parses binds without an error of its own, and binding keeps two promises:
// - the bound print parses, and binds, to the same print again;
// - a second pass over the same tree (which first gives every bound name
//   its prefix back) comes to the same print.
// Both hold unless two sources of one FROM clause go by the same name: a
// prefix that binding writes may then read as the other source (the text
// was ambiguous to begin with).
// Crashes, hangs, sanitizer reports and other exceptions are failures too.
#include <algorithm>
#include <string_view>
#include <vector>

#include "FuzzTarget.h"
#include "dialects/EngineInit.h"
#include "dialects/sql92/SQL92SyntaxProvider.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataObject.h"
#include "support/Exceptions.h"
#include "support/TextFile.h"
#include "tree/FromClause.h"
#include "tree/QualifiedNames.h"
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

// Whether two sources of one FROM clause go by the same name (alias, else
// the object's own name), compared without regard to case.
bool HasAmbiguousSources(TastNodeBase* root) {
  bool ambiguous = false;
  root->TraverseASTTreeDepthFirst([&ambiguous](TastNodeBase* node) {
    auto* from = TmvCast<TSQLFromClause>(node);
    if (!from || ambiguous) return;
    std::vector<WideString> names;
    std::vector<TSQLFromGroup*> groups{from};
    while (!groups.empty()) {
      TSQLFromGroup* group = groups.back();
      groups.pop_back();
      for (int i = 0; i < group->GetCount(); ++i) {
        TSQLFromSource* source = group->GetItems(i);
        if (auto* inner = TmvCast<TSQLFromGroup>(source)) {
          groups.push_back(inner);
        } else if (source->Alias && source->Alias->Name) {
          names.push_back(WideUpperCase(source->Alias->Name->Token));
        } else if (auto* object = TmvCast<TSQLFromObject>(source); object && object->Object &&
                                                                  object->Object->GetCount() > 0) {
          names.push_back(WideUpperCase(object->Object->Token(0)->Token));
        }
      }
    }
    std::sort(names.begin(), names.end());
    ambiguous = std::adjacent_find(names.begin(), names.end()) != names.end();
  });
  return ambiguous;
}

// Control characters shown as \xNN, so that a report survives a terminal.
std::string Visible(const WideString& text) {
  std::string out;
  for (char c : UTF8Encode(text)) {
    if (static_cast<unsigned char>(c) < 0x20 && c != '\n') {
      const char* digits = "0123456789ABCDEF";
      out += std::string("\\x") + digits[(c >> 4) & 15] + digits[c & 15];
    } else {
      out += c;
    }
  }
  return out;
}

std::string Show(const WideString& a, const WideString& b) {
  return "--- first\n" + Visible(a) + "\n--- second\n" + Visible(b);
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
    mvfuzz::Fail("the bound print parses again", Visible(bound) + "\n--- error\n" + Visible(e.Message()));
  }
  again->PrepareAndFixupRecursive();
  const WideString boundAgain = Print(again.get());
  tree->PrepareAndFixupRecursive();
  const WideString secondPass = Print(tree.get());
  if (HasAmbiguousSources(tree.get())) return 0;
  MV_FUZZ_CHECK(boundAgain == bound, Show(bound, boundAgain));
  MV_FUZZ_CHECK(secondPass == bound, Show(bound, secondPass));
  return 0;
}
