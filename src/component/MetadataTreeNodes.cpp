// The metadata tree: the container's objects sorted, then entered under the
// group levels of the grouping type (database, schema, kind of object).
#include <algorithm>

#include "component/MetadataListing.h"
#include "component/QueryBuilder.h"
#include "component/TreeNodes.h"

#include "component/MetadataListing.h"
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
    SortMetadataObjects(objects, options_, print_);
    singleDatabase_ = options_.HideSingleDatabaseNode() && IsSingleDatabase(objects);
    for (TmvMetadataObject* object : objects) Enter(object);
    for (auto& node : top_.Children) Expand(*node, 1);
    return std::move(top_.Children);
  }

 private:
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
  KindRow Row(TmvMetadataObjectKind kind) const {
    const auto& o = options_;
    switch (kind) {
      case mokTable:
        return {o.ShowUserTables(), o.ShowSystemTables(), o.TablesNodeName(), o.TablesNodeImageIndex(),
                o.UserTablesImageIndex(), o.SystemTablesImageIndex()};
      case mokView:
        return {o.ShowUserViews(), o.ShowSystemViews(), o.ViewsNodeName(), o.ViewsNodeImageIndex(),
                o.UserViewsImageIndex(), o.SystemViewsImageIndex()};
      case mokProcedure:
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
    if (!IsShownByTreeOptions(object, options_)) return;
    const KindRow row = Row(MetadataObjectKind(object));
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
