#include "StatementSet.h"

#include <filesystem>
#include <set>
#include <sstream>
#include <stdexcept>

namespace mv {

std::vector<TmvStatementSource> ParseStatementSet(const std::string& text, const std::string& fileName) {
  std::vector<TmvStatementSource> sources;
  std::set<std::string> seen;
  std::istringstream in(text);
  std::string line;
  int lineNumber = 0;
  while (std::getline(in, line)) {
    ++lineNumber;
    auto fail = [&](const std::string& message) {
      throw std::runtime_error(fileName + ":" + std::to_string(lineNumber) + ": " + message);
    };
    if (const auto hash = line.find('#'); hash != std::string::npos) line.erase(hash);
    std::istringstream fields(line);
    std::string folder, step, extra;
    if (!(fields >> folder)) continue;
    if (!(fields >> step)) fail("'" + folder + "' needs a step (1 takes every entry)");
    if (fields >> extra) fail("unexpected '" + extra + "' after the step");
    TmvStatementSource source;
    source.Folder = folder;
    source.Line = lineNumber;
    size_t used = 0;
    try {
      source.Step = std::stoi(step, &used);
    } catch (const std::exception&) {
      used = 0;
    }
    if (used == 0 || used != step.size() || source.Step < 1) fail("step must be a whole number of at least 1, not '" + step + "'");
    if (folder.find("..") != std::string::npos || folder.front() == '/') fail("folder must lie inside the corpus: '" + folder + "'");
    if (!seen.insert(folder).second) fail("folder '" + folder + "' named twice");
    sources.push_back(source);
  }
  return sources;
}

std::vector<TmvSelectedStatement> SampleEntries(const std::vector<TmvStatementEntry>& entries,
                                                const std::string& folder, int step) {
  if (step < 1) throw std::invalid_argument("step must be at least 1");
  std::vector<TmvSelectedStatement> selected;
  for (size_t i = 0; i < entries.size(); i += static_cast<size_t>(step))
    selected.push_back({folder, entries[i].Index, entries[i].Line, entries[i].Text});
  return selected;
}

std::vector<TmvSelectedStatement> SelectStatements(const std::vector<TmvStatementSource>& sources,
                                                   const std::string& corpusDir) {
  std::vector<TmvSelectedStatement> all;
  for (const TmvStatementSource& source : sources) {
    const auto path = std::filesystem::path(corpusDir) / source.Folder / "selects.sql";
    if (!std::filesystem::is_regular_file(path))
      throw std::runtime_error("no statement file " + path.string() + " (named on line " +
                               std::to_string(source.Line) + " of the set)");
    auto sample = SampleEntries(ReadStatementList(path.string()), source.Folder, source.Step);
    all.insert(all.end(), std::make_move_iterator(sample.begin()), std::make_move_iterator(sample.end()));
  }
  return all;
}

std::string JoinStatementList(const std::vector<TmvSelectedStatement>& statements) {
  std::string out;
  for (size_t i = 0; i < statements.size(); ++i) {
    if (i > 0) out += "\n;;\n";
    out += UTF8Encode(statements[i].Text);
  }
  if (!statements.empty()) out += "\n";
  return out;
}

std::string StatementIndex(const std::vector<TmvSelectedStatement>& statements) {
  std::string out = "n\tfolder\tentry\tline\tbytes\n";
  for (size_t i = 0; i < statements.size(); ++i) {
    const auto& s = statements[i];
    out += std::to_string(i + 1) + "\t" + s.Folder + "\t" + std::to_string(s.Entry) + "\t" +
           std::to_string(s.Line) + "\t" + std::to_string(UTF8Encode(s.Text).size()) + "\n";
  }
  return out;
}

}  // namespace mv
