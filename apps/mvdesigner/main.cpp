// mvdesigner: the visual query designer over a SQLite database or a
// metadata XML file.
//
//   mvdesigner [FILE.sqlite | FILE.xml] [--sql FILE | --layout FILE.xml]
//              [--dialect NAME] [--screenshot OUT.png]
//
// Without a file it opens the Chinook sample of the shared corpus next to
// the clone, when it is there. --screenshot renders the window (offscreen
// too: QT_QPA_PLATFORM=offscreen) to a PNG file and exits.
#include <QApplication>
#include <QFile>
#include <QPixmap>
#include <QTimer>
#include <cstdio>
#include <filesystem>
#include <string>

#include "DesignerWindow.h"
#include "dialects/EngineInit.h"
#include "support/Exceptions.h"
#include "surface/QtMainThread.h"

namespace {

int Usage(const char* message) {
  std::fprintf(stderr,
               "mvdesigner: %s\nusage: mvdesigner [FILE.sqlite | FILE.xml] [--sql FILE | --layout FILE.xml] "
               "[--dialect NAME] [--screenshot OUT.png]\n",
               message);
  return 2;
}

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  mv::InitializeEngine();
  mv::BindMainThreadDispatcherToQt();

  std::string database, sqlFile, layoutFile, dialect, screenshot;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    auto value = [&](std::string& into) {
      if (i + 1 >= argc) return false;
      into = argv[++i];
      return true;
    };
    if (arg == "--sql") {
      if (!value(sqlFile)) return Usage("--sql needs a file");
    } else if (arg == "--layout") {
      if (!value(layoutFile)) return Usage("--layout needs a file");
    } else if (arg == "--dialect") {
      if (!value(dialect)) return Usage("--dialect needs a name");
    } else if (arg == "--screenshot") {
      if (!value(screenshot)) return Usage("--screenshot needs a file");
    } else if (!arg.empty() && arg[0] == '-') {
      return Usage(("unknown option " + arg).c_str());
    } else if (database.empty()) {
      database = arg;
    } else {
      return Usage("one database or metadata file only");
    }
  }
  if (database.empty()) {
    const std::filesystem::path sample = std::filesystem::path(MV_SOURCE_DIR) / ".." / "shared" / "corpus" /
                                         "chinook" / "Chinook_Sqlite.sqlite";
    if (std::filesystem::exists(sample)) database = sample.lexically_normal().string();
  }

  mv::DesignerWindow window;
  try {
    if (!dialect.empty()) window.SetDialect(dialect);
    if (EndsWith(database, ".xml"))
      window.LoadMetadataXml(database);
    else if (!database.empty())
      window.LoadSQLite(database);
    if (!sqlFile.empty()) {
      QFile file(QString::fromStdString(sqlFile));
      if (!file.open(QIODevice::ReadOnly)) return Usage(("cannot read " + sqlFile).c_str());
      if (!window.SetSql(QString::fromUtf8(file.readAll()))) {
        std::fprintf(stderr, "mvdesigner: %s: the SQL does not parse\n", sqlFile.c_str());
        if (!screenshot.empty()) return 1;
      }
    }
    if (!layoutFile.empty() && !window.OpenLayout(QString::fromStdString(layoutFile))) {
      std::fprintf(stderr, "mvdesigner: %s: the layout cannot be read\n", layoutFile.c_str());
      return 1;
    }
  } catch (const mv::Exception& error) {
    std::fprintf(stderr, "mvdesigner: %s\n", error.what());
    return 1;
  }
  window.resize(1280, 800);
  window.show();
  if (screenshot.empty()) return app.exec();

  // Let the window lay itself out, then grab it.
  int result = 1;
  QTimer::singleShot(200, &window, [&] {
    const QPixmap picture = window.grab();
    result = picture.save(QString::fromStdString(screenshot), "PNG") ? 0 : 1;
    if (result) std::fprintf(stderr, "mvdesigner: cannot write %s\n", screenshot.c_str());
    app.quit();
  });
  app.exec();
  return result;
}
