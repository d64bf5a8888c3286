// A small expression tree for the toy grammars' actions.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/WideString.h"

struct ToyNode {
  explicit ToyNode(mv::WideString text) : text(std::move(text)) {}
  static std::unique_ptr<ToyNode> Prefix(mv::WideString op, std::unique_ptr<ToyNode> operand) {
    auto node = std::make_unique<ToyNode>(std::move(op));
    node->right = std::move(operand);
    return node;
  }

  // "(left op right)" for operators, "(op right)" for a prefix, the text for a leaf.
  std::string Dump() const {
    if (!left && !right) return mv::UTF8Encode(text);
    if (!left) return "(" + mv::UTF8Encode(text) + " " + right->Dump() + ")";
    return "(" + left->Dump() + " " + mv::UTF8Encode(text) + " " + right->Dump() + ")";
  }

  // Deep trees go without recursion.
  ~ToyNode() {
    std::vector<std::unique_ptr<ToyNode>> pending;
    if (left) pending.push_back(std::move(left));
    if (right) pending.push_back(std::move(right));
    while (!pending.empty()) {
      std::unique_ptr<ToyNode> n = std::move(pending.back());
      pending.pop_back();
      if (n->left) pending.push_back(std::move(n->left));
      if (n->right) pending.push_back(std::move(n->right));
    }
  }

  mv::WideString text;
  std::unique_ptr<ToyNode> left;
  std::unique_ptr<ToyNode> right;
};
