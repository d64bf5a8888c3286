// Moving parts of a union by dragging them in the union navigator: a
// SELECT's button or a group's bracket dropped on another button or bracket.
// Which drops are taken and what each does, on the model alone.
#pragma once

namespace mv {

class TmvQueryBase;

struct TmvUnionDragItem {
  enum Kind { Button, LeftBracket, RightBracket };
  // A SELECT for a button, a group for a bracket.
  TmvQueryBase* Object = nullptr;
  Kind Which = Button;
  bool operator==(const TmvUnionDragItem&) const = default;
};

// Whether `source` may be dropped on `target`.
bool CanDropUnionItem(const TmvUnionDragItem& target, const TmvUnionDragItem& source);
// The drop: the members move, with the union operators kept in their
// places; a group left empty is freed. Nothing for a drop not taken.
void DropUnionItem(const TmvUnionDragItem& target, const TmvUnionDragItem& source);

}  // namespace mv
