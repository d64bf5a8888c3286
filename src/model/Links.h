// A link: a join condition as the model sees it, a line between two
// datasources with an outer side or none and the expression behind it.
//
// A link stands in the `Links` of one datasource group (which owns it) and
// prints in one of two places: in the ON clause of its JoinOwner (lpFrom),
// or as a top-level condition of WHERE (lpWhere), where the outer side is
// marked by "(+)" on columns or by the operators "*=" and "=*".
//
// A simple link compares exactly two columns of two datasources: its
// RightDatasource lies inside JoinOwner and its LeftDatasource inside an item
// before JoinOwner in the group. A link that is not simple has its ends
// chosen only for drawing (RecalcSideDatasources).
#pragma once

#include <vector>

#include "model/ControlOwner.h"
#include "support/WideString.h"
#include "tree/AstNode.h"
#include "tree/NodeClass.h"

namespace mv {

class TmvDatasource;
class TmvDatasourceBase;
class TmvDatasourceGroup;
class TmvMetadataRelation;
class TmvQueryModelHost;
class TmvUnionSubQuery;
class TSQLExpressionItem;
class TSQLJoinKind;
class TSQLQualifiedName;

// ltOuter: all rows of that side are kept.
enum TmvQueryBuilderLinkSideType { ltInner, ltOuter };
enum TmvQueryBuilderLinkCardinality { qblcUnknown, qblcOne, qblcMany };
enum TmvQueryBuilderLinkPlace { lpFrom = 0, lpWhere = 1 };

using TmvDatasourceBaseList = std::vector<TmvDatasourceBase*>;

class TmvLink : public TmvQueryBuilderControlOwner {
  MV_DECLARE_CLASS()
 public:
  // Made by the group that owns it (TmvDatasourceGroup::CreateLink).
  TmvLink(TmvQueryModelHost* host, TmvDatasourceGroup* group);
  ~TmvLink() override;

  // --- State ---
  TmvDatasourceGroup* DatasourceGroup() const { return datasourceGroup_; }
  TmvUnionSubQuery* UnionSubQuery() const;
  // The item of the group under whose join the link prints (the later side).
  TmvDatasourceBase* JoinOwner() const { return joinOwner_; }
  TSQLExpressionItem* GetLinkExpression() const { return linkExpression_.get(); }
  // Every datasource the expression refers to.
  const TmvDatasourceList& ReferencedDatasources() const { return referencedDatasources_; }
  // The items of the group the expression touches (JoinOwner first when set).
  const TmvDatasourceBaseList& SameLevelDatasources() const { return sameLevelDatasources_; }
  TmvDatasource* LeftDatasource() const { return leftDatasource_; }
  TmvDatasource* RightDatasource() const { return rightDatasource_; }
  TmvQueryBuilderLinkSideType LeftType() const { return leftType_; }
  TmvQueryBuilderLinkSideType RightType() const { return rightType_; }
  // The column names of a simple link; null otherwise.
  TSQLQualifiedName* LeftField() const { return leftField_.get(); }
  TSQLQualifiedName* RightField() const { return rightField_.get(); }
  TmvQueryBuilderLinkCardinality LeftCardinality() const { return leftCardinality_; }
  TmvQueryBuilderLinkCardinality RightCardinality() const { return rightCardinality_; }
  TmvQueryBuilderLinkPlace LinkPlace() const { return linkPlace_; }
  bool IsSimple() const { return isSimple_; }
  // Made by a user or a program since the last reorder.
  bool IsNew() const { return isNew_; }
  void SetIsNew(bool value) { isNew_ = value; }

  // --- The expression ---
  // Takes the expression over and works the link out again for the same owner.
  void SetLinkExpression(TmvOwned<TSQLExpressionItem> expression);
  WideString GetLinkExpressionString();
  // Raises mvQBBadExpression when the text does not parse.
  void SetLinkExpressionString(const WideString& text);

  // --- Outer sides ---
  // Through SetJoinKindClass with the other side's present type.
  void SetLeftType(TmvQueryBuilderLinkSideType type);
  void SetRightType(TmvQueryBuilderLinkSideType type);
  // lpFrom: the owner's join kind, which all its links follow; lpWhere: the
  // marks of the expression as the dialect writes outer joins. Null: inner.
  void SetJoinKindClass(TastNodeClassRef joinKindClass);
  bool LeftTypeSupportOuter() const;
  bool RightTypeSupportOuter() const;
  bool IsSupportOuterJoins() const;
  void SetLeftDatasource(TmvDatasource* datasource);
  void SetRightDatasource(TmvDatasource* datasource);

  // --- Relations (defined with the link automation) ---
  // The relation of the metadata that this simple link follows, or null.
  TmvMetadataRelation* GetRelation() const;
  void CalcCardinality();
  void ResetCardinality();

  // Exchanges left and right; the owner becomes the old right datasource (the
  // old left one if the old right one was the owner).
  void FlipLink();
  // Moves the link into another group's Links (the reorder's business).
  void SetDatasourceGroup(TmvDatasourceGroup* group);
  // `item` went into the nested `group`: the group takes its place.
  void MoveDatasourceIntoGroup(TmvDatasourceBase* item, TmvDatasourceGroup* group);
  void RecalcSameLevelDatasources(TmvDatasourceBase* owner);
  // The drawing ends of a link that is not simple.
  void RecalcSideDatasources();
  ImvLinkControl* GetLinkControl() const;
  ImvLinkControl* GetILinkControl() const { return GetLinkControl(); }
  // Tells the control to follow the ends.
  void Realign();

  // --- Class operations ---
  // Exactly two distinct bound columns of two datasources, one in an item
  // before `owner`, the other inside it.
  static bool CanLoadExpressionAsSimpleLink(TmvDatasourceBase* owner, TSQLExpressionItem* expression);
  // A binary operator of exactly two distinct bound columns of two different
  // datasources of the group's SELECT.
  static bool CanLoadExpressionAsSimpleWhereLink(TmvDatasourceGroup* group, TSQLExpressionItem* expression);
  // The columns of the expression; the same column (by printed text) once.
  static void GetReferencedColumns(TSQLExpressionItem* expression, TSQLObjectColumnList& list);

  // --- Internals of the group, the datasources and the reorder ---
  // Stores the expression (owned), the place and the owner and works out
  // the ends, the sides, the sub-queries and the cardinality.
  void SetLinkParamsInternal(TmvDatasourceBase* owner, TmvOwned<TSQLExpressionItem> expression, bool isNew,
                             TmvQueryBuilderLinkPlace place);
  void CalcLeftTypeInternal();
  void CalcRightTypeInternal();
  // Sets the side types as they are, without touching the expression.
  void SetSideTypesInternal(TmvQueryBuilderLinkSideType left, TmvQueryBuilderLinkSideType right);
  void SetJoinOwner(TmvDatasourceBase* owner) { joinOwner_ = owner; }
  // "*" before or after the operator on the side that refers to `datasource`.
  void SetWhereLinkTypeTransactSQL(TmvQueryBuilderLinkSideType type, TmvDatasource* datasource);
  // "(+)" on each column of the expression bound to `datasource`.
  void SetOraclePlusForDatasource(TmvDatasource* datasource, bool flag);
  // Whether the expression refers to `datasource`.
  bool RefersTo(const TmvDatasource* datasource) const;

  int GetControlsCount() const override { return 1; }

  // --- The link's menu ---
  // Keeps every row of that side, or no longer. Where the other side may
  // not stay outer with it (a where-link, or a dialect without full and
  // right joins) the other side becomes inner.
  void SelectAllRowsFromLeft();
  void SelectAllRowsFromRight();
  // Whether the menu offers the outer sides.
  bool CanSelectAllRows() const;
  // Remove; the outer sides by the datasources' captions where the link can
  // be outer, checked when outer; the link's properties.
  TmvMenu GetPopupMenu(ImvControl* control) override;

 protected:
  void Destroying() override;
  bool NotifyDatasourceDestroyingInternal(TmvDatasource* datasource) override;
  void NotifyDatasourceReplacedInternal(TmvDatasource* oldDatasource, TmvDatasource* newDatasource) override;

 private:
  void LoadDatasourcesList();
  void ClearEnds();
  void HookEnd(TmvDatasource* datasource);
  void UnhookEnd(TmvDatasource* datasource);
  void EndDestroying(TmvObject* sender);
  // Sets both sides on a where-link as the dialect marks them.
  void ApplyWhereLinkTypes(bool leftOuter, bool rightOuter);

  TmvDatasourceGroup* datasourceGroup_;
  TmvDatasourceBase* joinOwner_ = nullptr;
  TmvOwned<TSQLExpressionItem> linkExpression_;
  TmvDatasourceList referencedDatasources_;
  TmvDatasourceBaseList sameLevelDatasources_;
  TmvDatasource* leftDatasource_ = nullptr;
  TmvDatasource* rightDatasource_ = nullptr;
  TmvQueryBuilderLinkSideType leftType_ = ltInner;
  TmvQueryBuilderLinkSideType rightType_ = ltInner;
  TmvOwned<TSQLQualifiedName> leftField_;
  TmvOwned<TSQLQualifiedName> rightField_;
  TmvQueryBuilderLinkCardinality leftCardinality_ = qblcUnknown;
  TmvQueryBuilderLinkCardinality rightCardinality_ = qblcUnknown;
  TmvQueryBuilderLinkPlace linkPlace_ = lpFrom;
  bool isSimple_ = false;
  bool isNew_ = false;
};

}  // namespace mv
