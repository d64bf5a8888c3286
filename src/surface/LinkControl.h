// A link between two fields, drawn by the work area under the boxes: a line
// from the row of one field to the row of the other, leaving each box by the
// side that faces the other box.
#pragma once

#include <QLine>

#include "model/ModelControls.h"

class QPainter;

namespace mv {

class TmvLink;
class TmvWorkAreaCanvas;

class TmvLinkControl : public ImvLinkControl {
 public:
  TmvLinkControl(TmvLink* link, TmvWorkAreaCanvas* canvas);
  ~TmvLinkControl() override;
  TmvLink* Link() const { return link_; }

  void UpdateControlVisualParams(TmvQueryBuilderControlOwner*) override { Realign(); }
  void Realign() override;

  // The ends of the line in the coordinates of the area; false when either
  // box is not shown.
  bool CalcLine(QLine& line) const;
  void Paint(QPainter& painter) const;

 private:
  TmvLink* link_;
  TmvWorkAreaCanvas* canvas_;
};

}  // namespace mv
