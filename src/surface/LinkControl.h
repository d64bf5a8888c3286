// A link between two fields, drawn by the work area under the boxes with the
// query builder's link painter: two stubs out of the rows and a diagonal
// between them, leaving each box by the side that faces the other box.
#pragma once

#include "model/ModelControls.h"
#include "surface/LinkGeometry.h"

class QPainter;

namespace mv {

class TmvLink;
class TmvQueryBuilderLinkPainter;
class TmvWorkAreaCanvas;

class TmvLinkControl : public ImvLinkControl {
 public:
  TmvLinkControl(TmvLink* link, TmvWorkAreaCanvas* canvas);
  ~TmvLinkControl() override;
  TmvLink* Link() const { return link_; }

  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override { Realign(); }
  void Realign() override;

  // The path in the coordinates of the area; false when either box is not shown.
  bool CalcPath(TmvLinkPath& path) const;
  void Paint(QPainter& canvas, const TmvQueryBuilderLinkPainter& painter, bool focused) const;

 private:
  TmvLink* link_;
  TmvWorkAreaCanvas* canvas_;
};

}  // namespace mv
