// Helpers of the front end's tests: run a rule of a generated toy parser
// over a text, scanned by the reference dialect's generated scanner.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "SQL92Scan.h"
#include "ScanTokens.h"
#include "frontend/Parser.h"
#include "support/Class.h"

namespace mvtest {

template <class P>
class ToyParse {
 public:
  using Rule = void (P::*)(mv::TmvWayPointsList&);

  explicit ToyParse(const std::u16string& text) : scanner_(mv::TmvCreate<mv::SQL92Scanner>()) {
    scanner_->Init(text);
    parser_ = mv::TmvCreate<P>(scanner_.get(), nullptr);
  }

  P& parser() { return *parser_; }
  mv::SQL92Scanner& scanner() { return *scanner_; }

  // The driver: true when a way reads the whole text; the second pass may
  // then run on parser().
  bool Find(Rule rule) {
    return parser_->FindWay([&](mv::TmvWayPointsList& list) { (parser_.get()->*rule)(list); });
  }

  // The decisions of the picked way (after a successful Find).
  std::string Way() const { return parser_->WayStr(); }

  // The decisions of every way that reads the whole text, in order of preference.
  std::vector<std::string> Survivors(Rule rule) {
    mv::TmvWayPointsList list;
    list.Add(mv::WayPointCache().Get(nullptr, 0));
    (parser_.get()->*rule)(list);
    parser_->Expect(list, mv::tkEndOfText);
    std::vector<std::string> out;
    for (int32_t i = 0; i < list.Count(); ++i) out.push_back(mv::TmvBaseParser::UnrollWayStr(list[i]));
    return out;
  }

  // The text of the token GetBadToken blames after a failed Find.
  std::u16string BadTokenText() const { return scanner_->GetToken(parser_->GetBadToken()).Text; }
  const mv::TmvToken& BadToken() const { return scanner_->GetToken(parser_->GetBadToken()); }

 private:
  mv::TmvOwned<mv::SQL92Scanner> scanner_;
  mv::TmvOwned<P> parser_;
};

}  // namespace mvtest
