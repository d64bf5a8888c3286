// A small parser for the options of one sub-command: "--name value",
// "--name=value", boolean flags, repeated options and positional arguments.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace mvsql {

class Arguments {
 public:
  // `valued` lists options that take a value, `flags` those that do not.
  // Raises UsageError for an unknown option or a missing value.
  Arguments(const std::vector<std::string>& args, const std::set<std::string>& valued,
            const std::set<std::string>& flags);

  bool Has(const std::string& name) const;
  // Last value given for the option, or `fallback`.
  std::string Value(const std::string& name, const std::string& fallback = "") const;
  // All values given for a repeatable option, in order.
  std::vector<std::string> Values(const std::string& name) const;
  const std::vector<std::string>& Positional() const { return positional_; }
  // The single input path ("-" when none is given); more than one raises UsageError.
  std::string InputPath() const;

 private:
  std::map<std::string, std::vector<std::string>> options_;
  std::vector<std::string> positional_;
};

}  // namespace mvsql
