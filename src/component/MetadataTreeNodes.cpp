// The metadata tree: the container's objects sorted, then entered under the
// group levels of the grouping type (database, schema, kind of object).
#include <algorithm>

#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"
#include "frontend/SQLContext.h"
#include "frontend/SyntaxProvider.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataObject.h"
#include "model/Datasources.h"
#include "model/QueryTree.h"
#include "sqlgen/SQLBuilder.h"
#include "support/MessageCatalog.h"
#include "tree/QualifiedNames.h"

namespace mv {

TmvTreeNode* TmvTreeNode::AddChild(WideString text, int imageIndex, TmvObject* data) {
  auto node = std::make_unique<TmvTreeNode>();
  node->Text = std::move(text);
  node->ImageIndex = imageIndex;
  node->Data = data;
  Children.push_back(std::move(node));
  return Children.back().get();
}

namespace {

enum ObjectKind { kTable, kView, kProcedure, kSynonym, kOther };

ObjectKind KindOf(const TmvMetadataObject* object) {
  if (TmvCast<TmvMetadataTable>(object)) return kTable;
  if (TmvCast<TmvMetadataView>(object)) return kView;
  if (TmvCast<TmvMetadataProcedure>(object)) return kProcedure;
  if (TmvCast<TmvMetadataSynonym>(object)) return kSynonym;
  return kOther;
}

int CompareTokens(const TastToken* a, const TastToken* b) {
  return WideCompareText(a ? WideStringView(a->Token) : WideStringView(), b ? WideStringView(b->Token) : WideStringView());
}

// Absent first, then by the number of parts, then part by part from the outermost.
int CompareNames(const TSQLQualifiedName* a, const TSQLQualifiedName* b) {
  const int countA = a ? a->Items.Count() : 0, countB = b ? b->Items.Count() : 0;
  if (countA != countB) return countA < countB ? -1 : 1;
  for (int i = countA - 1; i >= 0; --i)
    if (int order = CompareTokens(a->Token(i), b->Token(i))) return order;
  return 0;
}

class MetadataTreeBuilder {
 public:
  explicit MetadataTreeBuilder(TmvQueryBuilder& builder)
      : builder_(builder),
        options_(builder.TreeOptionsMetadata()),
        context_(*builder.SQLContext()),
        print_(context_.SQLBuilderExpression()) {}

  TmvTreeNodes Build() {
    TmvMetadataContainer* container = builder_.MetadataContainer();
    std::vector<TmvMetadataObject*> objects;
    for (int i = 0; i < container->Count(); ++i) objects.push_back(container->Items(i));
    Sort(objects);
    singleDatabase_ = options_.HideSingleDatabaseNode() && IsSingleDatabase(objects);
    for (TmvMetadataObject* object : objects) Enter(object);
    for (auto& node : top_.Children) Expand(*node, 1);
    return std::move(top_.Children);
  }

 private:
  WideString NameKey(const TmvMetadataObject* object) const {
    if (print_.UseAltNames() && !object->AltName().empty()) return object->AltName();
    return object->NameStrNotQuoted();
  }

  void Sort(std::vector<TmvMetadataObject*>& objects) const {
    const TmvQBObjectsSortingType sorting = options_.SortingType();
    if (sorting == ostNone) return;
    auto location = [](const TmvMetadataObject* a, const TmvMetadataObject* b) {
      if (int order = CompareNames(a->DBLink(), b->DBLink())) return order;
      if (int order = CompareNames(a->Database(), b->Database())) return order;
      return CompareTokens(a->Schema(), b->Schema());
    };
    std::stable_sort(objects.begin(), objects.end(), [&](TmvMetadataObject* a, TmvMetadataObject* b) {
      const int kind = int(KindOf(a)) - int(KindOf(b));
      if (sorting == ostTypeName && kind) return kind < 0;
      if (int order = location(a, b)) return order < 0;
      if (sorting == ostSchemaTypeName && kind) return kind < 0;
      return WideCompareText(NameKey(a), NameKey(b)) < 0;
    });
  }

  bool IsSingleDatabase(const std::vector<TmvMetadataObject*>& objects) const {
    if (objects.size() < 2) return true;
    return std::all_of(objects.begin(), objects.end(), [&](const TmvMetadataObject* object) {
      return context_.IsQualifiedNamesEqual(object->Database(), objects.front()->Database());
    });
  }

  // The kind's visibility, group text and images (group, user, system).
  struct KindRow {
    bool user, system;
    WideString groupText;
    int groupImage, userImage, systemImage;
  };
  KindRow Row(ObjectKind kind) const {
    const auto& o = options_;
    switch (kind) {
      case kTable:
        return {o.ShowUserTables(), o.ShowSystemTables(), o.TablesNodeName(), o.TablesNodeImageIndex(),
                o.UserTablesImageIndex(), o.SystemTablesImageIndex()};
      case kView:
        return {o.ShowUserViews(), o.ShowSystemViews(), o.ViewsNodeName(), o.ViewsNodeImageIndex(),
                o.UserViewsImageIndex(), o.SystemViewsImageIndex()};
      case kProcedure:
        return {o.ShowUserProcedures(), o.ShowSystemProcedures(), o.ProceduresNodeName(),
                o.ProceduresNodeImageIndex(), o.UserProceduresImageIndex(), o.SystemProceduresImageIndex()};
      default:
        return {o.ShowUserSynonyms(), o.ShowSystemSynonyms(), o.SynonymsNodeName(), o.SynonymsNodeImageIndex(),
                o.UserSynonymsImageIndex(), o.SystemSynonymsImageIndex()};
    }
  }

  // The group child of that text (case counts), made at the end when missing.
  static TmvTreeNode* Group(TmvTreeNode* parent, const WideString& text, int image) {
    for (auto& child : parent->Children)
      if (!child->Data && child->Text == text) {
        child->ImageIndex = image;
        return child.get();
      }
    return parent->AddChild(text, image, nullptr);
  }

  TmvTreeNode* DatabaseLevel(TmvTreeNode* parent, const TmvMetadataObject* object) {
    if (singleDatabase_) return parent;
    WideString text;
    auto present = [](const TSQLQualifiedName* name) { return name && name->Items.Count() > 0; };
    if (present(object->Database())) text = const_cast<TSQLQualifiedName*>(object->Database())->SimpleSQL(print_);
    if (present(object->DBLink())) text += u"@" + const_cast<TSQLQualifiedName*>(object->DBLink())->SimpleSQL(print_);
    if (text.empty()) {
      static const bool registered = [] {
        MessageCatalog().Register({{u"mvQBMetadataTreeCurrentDatabase", u"(current database)"}});
        return true;
      }();
      (void)registered;
      text = MessageText(u"mvQBMetadataTreeCurrentDatabase");
    }
    return Group(parent, text, options_.DatabaseImageIndex());
  }

  TmvTreeNode* SchemaLevel(TmvTreeNode* parent, const TmvMetadataObject* object) {
    WideString text;
    if (object->Schema() && !object->Schema()->Token.empty()) {
      text = const_cast<TastTokenIdentifier*>(object->Schema())->SimpleSQL(print_);
    } else if (TmvBaseSyntaxProvider* provider = context_.SyntaxProvider(); provider && provider->IsSupportSchemas()) {
      // A provider's name for no schema, when it has one that is not blank.
      TmvOwned<TastTokenIdentifier> empty = provider->GetEmptySchemaName(&context_);
      if (empty && !empty->Token.empty()) text = empty->SimpleSQL(print_);
    }
    return text.empty() ? parent : Group(parent, text, options_.SchemaImageIndex());
  }

  void Enter(TmvMetadataObject* object) {
    const ObjectKind kind = KindOf(object);
    if (kind == kOther || !object->Visible()) return;
    const KindRow row = Row(kind);
    if (!(object->System() ? row.system : row.user)) return;
    // The levels of the grouping, outermost first: d database, s schema, t type.
    static const char* const kLevels[] = {"", "d", "t", "ds", "dt", "td", "dst", "dts", "tds"};
    const std::string levels = kLevels[options_.GroupingType()];
    TmvTreeNode* parent = &top_;
    for (char level : levels) {
      if (level == 't') parent = Group(parent, row.groupText, row.groupImage);
      if (level == 'd') parent = DatabaseLevel(parent, object);
      if (level == 's') parent = SchemaLevel(parent, object);
    }
    WideString text;
    if (print_.UseAltNames() && !object->AltName().empty()) {
      text = const_cast<TastTokenIdentifier*>(object->AltNameId())->SimpleSQL(print_);
    } else if (levels.find('s') != std::string::npos) {
      text = const_cast<TastTokenIdentifier*>(object->Name())->SimpleSQL(print_);
    } else {
      text = object->GetNameAsString(levels.find('d') == std::string::npos, true, true, print_);
    }
    parent->AddChild(text, object->System() ? row.systemImage : row.userImage, object);
  }

  // -1 opens everything; otherwise levels up to DefaultExpandLevel.
  void Expand(TmvTreeNode& node, int level) const {
    const int limit = options_.DefaultExpandLevel();
    node.Expanded = limit < 0 || level <= limit;
    if (limit < 0 || level < limit)
      for (auto& child : node.Children) Expand(*child, level + 1);
  }

  TmvQueryBuilder& builder_;
  const TmvMetadataTreeOptions& options_;
  TmvBaseSQLContext& context_;
  TSQLBuilder& print_;
  TmvTreeNode top_;
  bool singleDatabase_ = false;
};

}  // namespace

TmvDatasource* AddMetadataObject(TmvQueryBuilder& builder, TmvUnionSubQuery* member, TmvMetadataObject* object,
                                 const TmvPoint& at) {
  if (!member && builder.ActiveSubQuery()) member = builder.ActiveSubQuery()->ActiveUnionSubQuery();
  if (!member || !object) return nullptr;
  TmvUpdateScope update(member);
  TmvDatasource* added = nullptr;
  if (TmvCast<TmvMetadataProcedure>(object)) {
    // A procedure is called by its full name, aliased after its name.
    added = member->AddStoredProcAt(object->FullNameStr(), at, object->NameStrNotQuoted() + u"_");
  } else if (TmvDataSourceObject* source = member->AddObjectAt(object, at, nullptr)) {
    if (builder.LinkOptions().CreateLinksFromRelations()) member->AddFKLinksForObject(source);
    if (builder.LinkOptions().CreateLinksByIdenticalFieldNames()) member->AddIdenticalFieldsLinksForObject(source);
    added = source;
  }
  if (added && builder.FieldsListOptions().SelectAllFieldsByDefault()) added->CheckAllFields();
  return added;
}

TmvTreeNodes BuildMetadataTree(TmvQueryBuilder& builder) {
  if (!builder.SyntaxProvider()) return {};
  return MetadataTreeBuilder(builder).Build();
}

}  // namespace mv
