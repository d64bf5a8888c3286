// How links look: a painter draws a link's path and its marks; three come
// with the designer (Simple, MS SQL Style, Access Style) and a host may
// register more. The query builder names its painter by class name
// (LinkPainterClassName); an unknown name gets the Access painter.
#pragma once

#include <QColor>
#include <QString>
#include <functional>
#include <memory>
#include <vector>

#include "surface/LinkGeometry.h"

class QPainter;

namespace mv {

class TmvLink;

enum TmvMarkStyle { msAccess, msEnterpriseManager };

class TmvQueryBuilderLinkPainter {
 public:
  virtual ~TmvQueryBuilderLinkPainter() = default;
  // The name users pick the painter by.
  virtual QString PainterStyle() const = 0;
  // The path in LinkColor (2 wide when focused), then the painter's marks.
  virtual void PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused, const TmvLink& link) const;

  QColor LinkColor = Qt::black;
  // The button face and its shadow of the system's palette.
  QColor MarkColor;
  QColor MarkColorFocused;

 protected:
  TmvQueryBuilderLinkPainter();
  void DrawLine(QPainter& painter, const TmvLinkPath& path, bool focused) const;
  // The three marks around the middle C of the diagonal, with d the
  // direction of the path (+1: left to right) and r their half size.
  static void DrawLeftSideMark(QPainter& painter, QPoint c, int d, int r);
  static void DrawRightSideMark(QPainter& painter, QPoint c, int d, int r);
  static void DrawCenterMark(QPainter& painter, QPoint c, int r);
};

class TmvQueryBuilderLinkPainterSimple : public TmvQueryBuilderLinkPainter {
 public:
  QString PainterStyle() const override { return QStringLiteral("Simple"); }
  void PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused, const TmvLink& link) const override;
  QColor LinkShapesColor = Qt::white;
};

class TmvQueryBuilderLinkPainterMSSQL : public TmvQueryBuilderLinkPainter {
 public:
  TmvQueryBuilderLinkPainterMSSQL();
  QString PainterStyle() const override { return QStringLiteral("MS SQL Style"); }
  void PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused, const TmvLink& link) const override;
  QColor LinkColorFocused;
  QColor LinkBorderColor = Qt::black;
};

class TmvQueryBuilderLinkPainterAccess : public TmvQueryBuilderLinkPainter {
 public:
  QString PainterStyle() const override { return QStringLiteral("Access Style"); }
  void PaintLink(QPainter& painter, const TmvLinkPath& path, bool focused, const TmvLink& link) const override;
  TmvMarkStyle MarkStyle = msAccess;
};

// The painter classes of the process, by class name, in the order they
// were registered (the three built-in ones first).
class TmvQueryBuilderLinkPainters {
 public:
  using Factory = std::function<std::unique_ptr<TmvQueryBuilderLinkPainter>()>;
  void RegisterPainter(const QString& className, Factory factory);
  // An Access painter when no class of that name (or style) is registered.
  std::unique_ptr<TmvQueryBuilderLinkPainter> CreateByName(const QString& className) const;
  std::unique_ptr<TmvQueryBuilderLinkPainter> CreateByUserName(const QString& style) const;
  // Every painter's style, in list order.
  std::vector<QString> GetUserNames() const;

 private:
  struct Entry {
    QString className;
    Factory factory;
  };
  std::vector<Entry> entries_;
};

TmvQueryBuilderLinkPainters& LinkPainters();

}  // namespace mv
