#include "Arguments.h"

#include "Command.h"

namespace mvsql {

Arguments::Arguments(const std::vector<std::string>& args, const std::set<std::string>& valued,
                     const std::set<std::string>& flags) {
  bool onlyPositional = false;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (onlyPositional || arg == "-" || arg.rfind("--", 0) != 0) {
      positional_.push_back(arg);
      continue;
    }
    if (arg == "--") {
      onlyPositional = true;
      continue;
    }
    std::string name = arg.substr(2);
    std::string value;
    bool hasValue = false;
    if (auto eq = name.find('='); eq != std::string::npos) {
      value = name.substr(eq + 1);
      name = name.substr(0, eq);
      hasValue = true;
    }
    if (valued.count(name)) {
      if (!hasValue) {
        if (i + 1 >= args.size()) throw UsageError{"option --" + name + " needs a value"};
        value = args[++i];
      }
      options_[name].push_back(value);
    } else if (flags.count(name)) {
      if (hasValue) throw UsageError{"option --" + name + " takes no value"};
      options_[name].push_back("");
    } else {
      throw UsageError{"unknown option --" + name};
    }
  }
}

bool Arguments::Has(const std::string& name) const { return options_.count(name) > 0; }

std::string Arguments::Value(const std::string& name, const std::string& fallback) const {
  auto it = options_.find(name);
  return it == options_.end() ? fallback : it->second.back();
}

std::vector<std::string> Arguments::Values(const std::string& name) const {
  auto it = options_.find(name);
  return it == options_.end() ? std::vector<std::string>{} : it->second;
}

std::string Arguments::InputPath() const {
  if (positional_.size() > 1) throw UsageError{"more than one input file given"};
  return positional_.empty() ? "-" : positional_.front();
}

}  // namespace mvsql
