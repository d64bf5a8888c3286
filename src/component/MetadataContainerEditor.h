// The metadata container editor without its widgets: a copy of the caller's
// container shown as a tree (database, schema, object, and under an object
// its fields and relations), six tool buttons that filter the tree, the
// property panes of an object and of a field (edits reach the copy when the
// pane is left), deletion, XML files, and OK, which hands the copy back.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "support/Class.h"
#include "support/WideString.h"

namespace mv {

class TmvBaseSQLContext;
class TmvMetadataContainer;
class TmvMetadataField;
class TmvMetadataFilter;
class TmvMetadataLoadWizard;
class TmvMetadataObject;
class TmvMetadataRelation;

class TmvMetadataContainerEditor {
 public:
  enum NodeKind { nkDatabase, nkSchema, nkObject, nkFields, nkRelations, nkField, nkRelation };
  struct Node {
    WideString Text;
    NodeKind Kind;
    TmvMetadataObject* Object = nullptr;  // the object of this node or of its object level
    TmvMetadataField* Field = nullptr;
    TmvMetadataRelation* Relation = nullptr;
    Node* Parent = nullptr;
    std::vector<std::unique_ptr<Node>> Children;
  };
  enum Tool { sbUserObjects, sbSystemObjects, sbTables, sbViews, sbProcedures, sbSynonyms };
  static constexpr int kToolCount = sbSynonyms + 1;
  enum Pane { pNone, pObjectProps, pFieldProps };
  struct ObjectProps {
    WideString Type, Database, Schema, Name, ShortDescription, LongDescription, AltName;
    bool Visible = true;
    bool System = false;
  };
  struct FieldProps {
    WideString Name, AltName, Type, ShortDescription, LongDescription;
  };

  // Copies `caller`; `filter` (may be null) goes to the load wizard.
  TmvMetadataContainerEditor(TmvMetadataContainer& caller, bool noCancel, const TmvMetadataFilter* filter);
  ~TmvMetadataContainerEditor();
  TmvMetadataContainerEditor(const TmvMetadataContainerEditor&) = delete;
  TmvMetadataContainerEditor& operator=(const TmvMetadataContainerEditor&) = delete;

  TmvMetadataContainer& Container() const { return *container_; }
  bool NoCancel() const { return noCancel_; }

  // --- The tree ---
  const std::vector<std::unique_ptr<Node>>& Tree() const { return tree_; }
  void LoadMetadataTree();
  bool ToolDown(Tool tool) const { return tools_[tool]; }
  // Filters the tree again.
  void SetToolDown(Tool tool, bool down);
  Node* Selected() const { return selected_; }
  // Saves the pane that is left and shows the one of `node` (may be null).
  void Select(Node* node);
  // The first node whose text path (texts joined by "/") is `path`; null if none.
  Node* FindNode(WideStringView path) const;

  // --- Panes ---
  Pane CurrentPane() const { return pane_; }
  static WideString NoPropertiesText() { return u"No properties for this node"; }
  ObjectProps& ObjectPane() { return objectProps_; }
  FieldProps& FieldPane() { return fieldProps_; }
  // A control of a pane changed: marks it to be saved when it is left.
  void PaneChanged() { dirty_ = true; }
  // Writes a changed pane to the model now.
  void SavePane();

  // --- Deleting ---
  bool DeleteEnabled() const;
  // Answers a question such as "Clear Metadata Container?"; no answer counts as yes.
  std::function<bool(WideStringView question)> OnConfirm;
  void DeleteSelected();

  // --- Files and loading ---
  // With the XML filter, ".xml" unless the name ends in ".xml" in any case.
  static WideString XMLFileName(WideStringView name, bool xmlFilter);
  void SaveToXML(WideStringView fileName, bool xmlFilter = true);
  void LoadFromXML(WideStringView fileName);
  // Runs the load wizard (through the host's form) on the copy with the
  // editor's filter, and fills the tree again.
  void RunLoadWizard();

  // OK: the caller's container takes the copy.
  void Ok();

 private:
  Node* Level(std::vector<std::unique_ptr<Node>>& list, Node* parent, WideStringView text, NodeKind kind);
  bool Passes(TmvMetadataObject* object) const;
  void LoadObject(TmvMetadataObject* object);
  void LoadPane();
  static void CollectObjects(const Node* node, std::vector<TmvMetadataObject*>& objects);

  TmvMetadataContainer& caller_;
  bool noCancel_;
  TmvOwned<TmvBaseSQLContext> context_;
  TmvOwned<TmvMetadataContainer> container_;
  std::unique_ptr<TmvMetadataFilter> filter_;
  std::vector<std::unique_ptr<Node>> tree_;
  bool tools_[kToolCount] = {true, false, true, true, true, true};
  Node* selected_ = nullptr;
  Pane pane_ = pNone;
  ObjectProps objectProps_;
  FieldProps fieldProps_;
  bool dirty_ = false;
};

// The form that shows an editor (true for OK) and the one that shows a load
// wizard; the design surface sets them.
using TmvMetadataContainerEditorForm = std::function<bool(TmvMetadataContainerEditor& editor)>;
using TmvMetadataLoadWizardForm = std::function<void(TmvMetadataLoadWizard& wizard)>;
void SetMetadataContainerEditorForm(TmvMetadataContainerEditorForm form);
void SetMetadataLoadWizardForm(TmvMetadataLoadWizardForm form);

// Edits `container` in the editor's form; true when it closed with OK (the
// container then holds the edits). False, with nothing changed, without a form.
bool EditMetadataContainer(TmvMetadataContainer& container, bool noCancel, const TmvMetadataFilter* filter);

}  // namespace mv
