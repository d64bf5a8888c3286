#include "component/MetadataContainerEditor.h"

#include "component/MetadataLoadWizard.h"
#include "frontend/SQLContext.h"
#include "metadata/MetadataContainer.h"
#include "metadata/MetadataField.h"
#include "metadata/MetadataFilter.h"
#include "metadata/MetadataObject.h"
#include "metadata/MetadataRelation.h"
#include "support/BatchUpdatable.h"
#include "support/MessageCatalog.h"

namespace mv {

namespace {

void RegisterEditorMessages() {
  static const bool registered = [] {
    MessageCatalog().Register({{u"mvQBFields", u"Fields"},
                               {u"mvQBRelations", u"Relations"},
                               {u"mvQBObjectTypeTable", u"Table"},
                               {u"mvQBObjectTypeView", u"View"},
                               {u"mvQBObjectTypeProcedure", u"Procedure"},
                               {u"mvQBObjectTypeSynonym", u"Synonym"},
                               {u"mvQBObjectTypeUnknown", u"Unknown"},
                               {u"mvQBClearMetadataContainer", u"Clear Metadata Container?"}});
    return true;
  }();
  (void)registered;
}

// The type key of each kind, in the order of TmvMetadataFilterApplyFor.
const char16_t* const kTypeKeys[] = {u"mvQBObjectTypeTable", u"mvQBObjectTypeView", u"mvQBObjectTypeProcedure",
                                     u"mvQBObjectTypeSynonym"};
// The tool button of each kind, in the same order.
const TmvMetadataContainerEditor::Tool kKindTools[] = {
    TmvMetadataContainerEditor::sbTables, TmvMetadataContainerEditor::sbViews,
    TmvMetadataContainerEditor::sbProcedures, TmvMetadataContainerEditor::sbSynonyms};

TmvMetadataContainerEditorForm& EditorForm() {
  static TmvMetadataContainerEditorForm form;
  return form;
}

TmvMetadataLoadWizardForm& WizardForm() {
  static TmvMetadataLoadWizardForm form;
  return form;
}

}  // namespace

void SetMetadataContainerEditorForm(TmvMetadataContainerEditorForm form) { EditorForm() = std::move(form); }
void SetMetadataLoadWizardForm(TmvMetadataLoadWizardForm form) { WizardForm() = std::move(form); }

TmvMetadataContainerEditor::TmvMetadataContainerEditor(TmvMetadataContainer& caller, bool noCancel,
                                                       const TmvMetadataFilter* filter)
    : caller_(caller), noCancel_(noCancel), filter_(std::make_unique<TmvMetadataFilter>()) {
  RegisterEditorMessages();
  context_ = TmvCreate<TmvBaseSQLContext>();
  // The copy reads names as the caller's dialect does.
  if (TmvBaseSQLContext* callerContext = caller.SQLContext()) {
    context_->SetSyntaxProvider(callerContext->SyntaxProvider());
    context_->SetMetadataProvider(callerContext->MetadataProvider());
  }
  container_ = TmvCreate<TmvMetadataContainer>(nullptr, context_.get());
  context_->SetMetadataContainer(container_.get());
  container_->Assign(&caller);
  if (filter) filter_->Assign(filter);
  LoadMetadataTree();
}

TmvMetadataContainerEditor::~TmvMetadataContainerEditor() {
  tree_.clear();
  context_->SetMetadataContainer(nullptr);
  container_.reset();
  context_->SetMetadataProvider(nullptr);
  context_->SetSyntaxProvider(nullptr);
}

// --- The tree ---

bool TmvMetadataContainerEditor::Passes(TmvMetadataObject* object) const {
  if (!tools_[object->System() ? sbSystemObjects : sbUserObjects]) return false;
  TmvMetadataFilterApplyFor kind;
  return !TmvMetadataFilter::KindOf(object, kind) || tools_[kKindTools[kind]];
}

TmvMetadataContainerEditor::Node* TmvMetadataContainerEditor::Level(std::vector<std::unique_ptr<Node>>& list,
                                                                    Node* parent, WideStringView text,
                                                                    NodeKind kind) {
  // FindNamedNode: a level is shared by the objects under it.
  for (const auto& node : list)
    if (node->Kind == kind && node->Text == text) return node.get();
  auto node = std::make_unique<Node>();
  node->Text = WideString(text);
  node->Kind = kind;
  node->Parent = parent;
  list.push_back(std::move(node));
  return list.back().get();
}

void TmvMetadataContainerEditor::LoadObject(TmvMetadataObject* object) {
  std::vector<std::unique_ptr<Node>>* list = &tree_;
  Node* parent = nullptr;
  auto descend = [&](WideStringView text, NodeKind kind) {
    parent = Level(*list, parent, text, kind);
    list = &parent->Children;
  };
  WideString database = object->DatabaseStrNotQuoted();
  if (!object->DBLinkStrNotQuoted().empty()) database += u"@" + object->DBLinkStrNotQuoted();
  if (!database.empty()) descend(database, nkDatabase);
  if (!object->SchemaStrNotQuoted().empty()) descend(object->SchemaStrNotQuoted(), nkSchema);
  auto node = std::make_unique<Node>();
  node->Text = object->NameStrNotQuoted();
  node->Kind = nkObject;
  node->Object = object;
  node->Parent = parent;
  Node* objectNode = node.get();
  list->push_back(std::move(node));
  auto group = [&](const char16_t* key, NodeKind kind) {
    auto g = std::make_unique<Node>();
    g->Text = MessageText(key);
    g->Kind = kind;
    g->Object = object;
    g->Parent = objectNode;
    objectNode->Children.push_back(std::move(g));
    return objectNode->Children.back().get();
  };
  if (object->GetFields()->Count() > 0) {
    Node* fields = group(u"mvQBFields", nkFields);
    for (int i = 0; i < object->GetFields()->Count(); ++i) {
      auto field = std::make_unique<Node>();
      field->Field = object->GetFields()->Items(i);
      field->Text = field->Field->NameStrNotQuoted();
      field->Kind = nkField;
      field->Object = object;
      field->Parent = fields;
      fields->Children.push_back(std::move(field));
    }
  }
  if (object->GetRelations()->Count() > 0) {
    Node* relations = group(u"mvQBRelations", nkRelations);
    for (int i = 0; i < object->GetRelations()->Count(); ++i) {
      auto relation = std::make_unique<Node>();
      relation->Relation = object->GetRelations()->Items(i);
      relation->Text = relation->Relation->ChildTableStrNotQuoted();
      relation->Kind = nkRelation;
      relation->Object = object;
      relation->Parent = relations;
      relations->Children.push_back(std::move(relation));
    }
  }
}

void TmvMetadataContainerEditor::LoadMetadataTree() {
  selected_ = nullptr;
  pane_ = pNone;
  dirty_ = false;
  tree_.clear();
  for (int i = 0; i < container_->Count(); ++i)
    if (Passes(container_->Items(i))) LoadObject(container_->Items(i));
}

void TmvMetadataContainerEditor::SetToolDown(Tool tool, bool down) {
  if (tools_[tool] == down) return;
  SavePane();
  tools_[tool] = down;
  LoadMetadataTree();
}

TmvMetadataContainerEditor::Node* TmvMetadataContainerEditor::FindNode(WideStringView path) const {
  const std::vector<std::unique_ptr<Node>>* list = &tree_;
  Node* found = nullptr;
  while (!path.empty()) {
    const size_t slash = path.find(u'/');
    const WideStringView part = path.substr(0, slash);
    found = nullptr;
    for (const auto& node : *list)
      if (node->Text == part) {
        found = node.get();
        break;
      }
    if (!found) return nullptr;
    list = &found->Children;
    path = slash == WideStringView::npos ? WideStringView() : path.substr(slash + 1);
  }
  return found;
}

// --- Panes ---

void TmvMetadataContainerEditor::Select(Node* node) {
  SavePane();
  selected_ = node;
  LoadPane();
}

void TmvMetadataContainerEditor::LoadPane() {
  dirty_ = false;
  pane_ = pNone;
  if (!selected_) return;
  if (selected_->Kind == nkObject) {
    TmvMetadataObject* object = selected_->Object;
    TmvMetadataFilterApplyFor kind;
    objectProps_.Type =
        MessageText(TmvMetadataFilter::KindOf(object, kind) ? kTypeKeys[kind] : u"mvQBObjectTypeUnknown");
    objectProps_.Database = object->DatabaseStrNotQuoted();
    objectProps_.Schema = object->SchemaStrNotQuoted();
    objectProps_.Name = object->NameStrNotQuoted();
    objectProps_.ShortDescription = object->ShortDescription();
    objectProps_.LongDescription = object->LongDescription();
    objectProps_.AltName = object->AltName();
    objectProps_.Visible = object->Visible();
    objectProps_.System = object->System();
    pane_ = pObjectProps;
  } else if (selected_->Kind == nkField) {
    TmvMetadataField* field = selected_->Field;
    fieldProps_.Name = field->NameStrNotQuoted();
    fieldProps_.AltName = field->AltName();
    fieldProps_.Type = field->FieldTypeName();
    fieldProps_.ShortDescription = field->ShortDescription();
    fieldProps_.LongDescription = field->LongDescription();
    pane_ = pFieldProps;
  }
}

void TmvMetadataContainerEditor::SavePane() {
  if (!dirty_ || !selected_) return;
  dirty_ = false;
  if (pane_ == pObjectProps) {
    TmvMetadataObject* object = selected_->Object;
    object->SetShortDescription(objectProps_.ShortDescription);
    object->SetLongDescription(objectProps_.LongDescription);
    object->SetAltName(objectProps_.AltName);
    object->SetVisible(objectProps_.Visible);
    object->SetSystem(objectProps_.System);
  } else if (pane_ == pFieldProps) {
    TmvMetadataField* field = selected_->Field;
    field->SetNameStr(fieldProps_.Name);
    field->SetAltName(fieldProps_.AltName);
    field->SetFieldTypeName(fieldProps_.Type);
    field->SetShortDescription(fieldProps_.ShortDescription);
    field->SetLongDescription(fieldProps_.LongDescription);
    selected_->Text = field->NameStrNotQuoted();
  }
}

// --- Deleting ---

bool TmvMetadataContainerEditor::DeleteEnabled() const { return selected_ && container_->Loaded(); }

void TmvMetadataContainerEditor::CollectObjects(const Node* node, std::vector<TmvMetadataObject*>& objects) {
  if (node->Kind == nkObject) {
    objects.push_back(node->Object);
    return;
  }
  for (const auto& child : node->Children) CollectObjects(child.get(), objects);
}

void TmvMetadataContainerEditor::DeleteSelected() {
  if (!DeleteEnabled()) return;
  Node* node = selected_;
  if (node == tree_.front().get()) {
    if (OnConfirm && !OnConfirm(MessageText(u"mvQBClearMetadataContainer"))) return;
    container_->Clear();
    LoadMetadataTree();
    return;
  }
  dirty_ = false;  // the pane's node goes
  std::vector<std::unique_ptr<Node>>& siblings = node->Parent ? node->Parent->Children : tree_;
  size_t index = 0;
  while (siblings[index].get() != node) ++index;
  {
    TmvUpdateBatch batch(*container_);
    switch (node->Kind) {
      case nkField:
        node->Object->GetFields()->Remove(node->Field);
        break;
      case nkRelation:
        node->Object->GetRelations()->Remove(node->Relation);
        break;
      case nkFields:
        node->Object->GetFields()->Clear();
        break;
      case nkRelations:
        node->Object->GetRelations()->Clear();
        break;
      default: {
        std::vector<TmvMetadataObject*> objects;
        CollectObjects(node, objects);
        for (TmvMetadataObject* object : objects) container_->Remove(object);
      }
    }
  }
  Node* parent = node->Parent;
  siblings.erase(siblings.begin() + std::ptrdiff_t(index));
  // The neighbour: the next node, else the one before, else the parent.
  selected_ = index < siblings.size() ? siblings[index].get() : index > 0 ? siblings[index - 1].get() : parent;
  LoadPane();
}

// --- Files ---

WideString TmvMetadataContainerEditor::XMLFileName(WideStringView name, bool xmlFilter) {
  WideString result(name);
  if (xmlFilter && (result.size() < 4 || !WideSameText(WideStringView(result).substr(result.size() - 4), u".xml")))
    result += u".xml";
  return result;
}

void TmvMetadataContainerEditor::SaveToXML(WideStringView fileName, bool xmlFilter) {
  SavePane();
  container_->SaveToXMLFile(XMLFileName(fileName, xmlFilter));
}

void TmvMetadataContainerEditor::LoadFromXML(WideStringView fileName) {
  container_->LoadFromXMLFile(fileName);
  LoadMetadataTree();
}

void TmvMetadataContainerEditor::RunLoadWizard() {
  SavePane();
  TmvMetadataLoadWizard wizard(*container_);
  wizard.SetMetadataFilter(filter_.get());
  if (WizardForm()) WizardForm()(wizard);
  LoadMetadataTree();
}

void TmvMetadataContainerEditor::Ok() {
  SavePane();
  caller_.Assign(container_.get());
}

bool EditMetadataContainer(TmvMetadataContainer& container, bool noCancel, const TmvMetadataFilter* filter) {
  if (!EditorForm()) return false;
  TmvMetadataContainerEditor editor(container, noCancel, filter);
  if (!EditorForm()(editor)) return false;
  editor.Ok();
  return true;
}

}  // namespace mv
