// The designer's window: the metadata tree on the left, the design pane in
// the middle, the SQL text below it, all over one query builder. Editing
// either side updates the other: the pane through the model, the text when
// it is applied (Ctrl+Return or leaving the editor).
#pragma once

#include <QMainWindow>
#include <memory>
#include <string>

#include "component/QueryBuilder.h"

class QComboBox;
class QPlainTextEdit;

namespace mvsql {
class MetadataSource;
}

namespace mv {

class TmvDesignPane;
class TmvTreeViewMetadata;
class TmvTreeViewQueryStructure;

class DesignerWindow : public QMainWindow {
  Q_OBJECT
 public:
  DesignerWindow();
  ~DesignerWindow() override;

  // Raise mv::Exception with the file and the reason.
  void LoadSQLite(const std::string& path);
  void LoadMetadataXml(const std::string& path);
  // False, with the error in the status bar, when the text does not parse.
  bool SetSql(const QString& text);
  void SetDialect(const std::string& name);
  // The query with the places of its boxes, as a layout document; false,
  // with the reason in the status bar, when the file cannot be read or written.
  bool OpenLayout(const QString& path);
  bool SaveLayout(const QString& path);

  TmvQueryBuilder& Builder() { return *builder_; }
  TmvDesignPane* Pane() const { return pane_; }
  QPlainTextEdit* SqlEditor() const { return sqlText_; }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void ShowSql();

  TmvOwned<TmvBaseSyntaxProvider> provider_;
  TmvOwned<TmvQueryBuilder> builder_;
  std::unique_ptr<mvsql::MetadataSource> metadata_;
  TmvDesignPane* pane_;
  TmvTreeViewMetadata* tree_;
  TmvTreeViewQueryStructure* structure_;
  QPlainTextEdit* sqlText_;
  QComboBox* dialects_;
  bool showingSql_ = false;
};

}  // namespace mv
