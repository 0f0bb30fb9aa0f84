#include "Platform/ObjectStore/Predicate.h"

#include <cctype>
#include <charconv>
#include <cstdlib>

#include "Platform/ObjectStore/ManagedObject.h"
#include "Platform/ObjectStore/StoreError.h"

namespace kestrona {

namespace {

using Node = PredicateNode;
using NodePointer = std::shared_ptr<const PredicateNode>;

enum class TokenKind { identifier, number, string, argument, symbol, end };

struct Token {
  TokenKind kind = TokenKind::end;
  std::string text;
};

bool equalsIgnoringCase(std::string_view lhs, std::string_view rhs) {
  if (lhs.size() != rhs.size()) return false;
  for (std::size_t i = 0; i < lhs.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(lhs[i])) != std::tolower(static_cast<unsigned char>(rhs[i]))) {
      return false;
    }
  }
  return true;
}

class Parser {
 public:
  Parser(std::string_view format, std::vector<Value> arguments)
      : format_(format), arguments_(std::move(arguments)) {
    advance();
  }

  NodePointer parse() {
    auto node = parseOr();
    if (token_.kind != TokenKind::end) fail("unexpected \"" + token_.text + "\"");
    if (nextArgument_ != arguments_.size()) fail("more arguments than %@ in the format");
    return node;
  }

 private:
  [[noreturn]] void fail(const std::string& why) const {
    throw PredicateFormatError("Unable to parse the format \"" + std::string(format_) + "\": " + why,
                               std::string(format_));
  }

  void advance() {
    while (position_ < format_.size() && std::isspace(static_cast<unsigned char>(format_[position_]))) ++position_;
    token_ = Token();
    if (position_ >= format_.size()) return;
    char c = format_[position_];
    auto start = position_;
    if (std::isalpha(static_cast<unsigned char>(c)) || c == '_' || c == '$') {
      while (position_ < format_.size() &&
             (std::isalnum(static_cast<unsigned char>(format_[position_])) || format_[position_] == '_' ||
              format_[position_] == '.' || format_[position_] == '$')) {
        ++position_;
      }
      token_ = {TokenKind::identifier, std::string(format_.substr(start, position_ - start))};
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               (c == '-' && position_ + 1 < format_.size() && std::isdigit(static_cast<unsigned char>(format_[position_ + 1])))) {
      ++position_;
      while (position_ < format_.size() &&
             (std::isdigit(static_cast<unsigned char>(format_[position_])) || format_[position_] == '.')) {
        ++position_;
      }
      token_ = {TokenKind::number, std::string(format_.substr(start, position_ - start))};
    } else if (c == '"' || c == '\'') {
      ++position_;
      std::string text;
      while (position_ < format_.size() && format_[position_] != c) {
        if (format_[position_] == '\\' && position_ + 1 < format_.size()) ++position_;
        text += format_[position_++];
      }
      if (position_ >= format_.size()) fail("a quoted string is not closed");
      ++position_;
      token_ = {TokenKind::string, std::move(text)};
    } else if (c == '%') {
      if (format_.substr(position_, 2) != "%@") fail("only %@ is supported as a placeholder");
      position_ += 2;
      token_ = {TokenKind::argument, "%@"};
    } else {
      static const char* symbols[] = {"==", "!=", "<>", "<=", ">=", "=<", "=>", "&&", "||",
                                      "=",  "<",  ">",  "!",  "(",  ")"};
      for (const char* symbol : symbols) {
        if (format_.substr(position_).starts_with(symbol)) {
          position_ += std::char_traits<char>::length(symbol);
          token_ = {TokenKind::symbol, symbol};
          return;
        }
      }
      fail(std::string("unexpected character '") + c + "'");
    }
  }

  bool isKeyword(std::string_view word) const {
    return token_.kind == TokenKind::identifier && equalsIgnoringCase(token_.text, word);
  }
  bool isSymbol(std::string_view symbol) const { return token_.kind == TokenKind::symbol && token_.text == symbol; }

  // Operands joined by one junction (its keyword or its symbol), left to right.
  NodePointer parseJunction(Node::Kind kind, std::string_view keyword, std::string_view symbol,
                            NodePointer (Parser::*operand)()) {
    auto left = (this->*operand)();
    std::vector<NodePointer> children{left};
    while (isKeyword(keyword) || isSymbol(symbol)) {
      advance();
      children.push_back((this->*operand)());
    }
    if (children.size() == 1) return left;
    auto node = std::make_shared<Node>();
    node->kind = kind;
    node->children = std::move(children);
    return node;
  }

  NodePointer parseOr() { return parseJunction(Node::Kind::disjunction, "OR", "||", &Parser::parseAnd); }
  NodePointer parseAnd() { return parseJunction(Node::Kind::conjunction, "AND", "&&", &Parser::parseNot); }

  NodePointer parseNot() {
    if (isKeyword("NOT") || isSymbol("!")) {
      advance();
      auto node = std::make_shared<Node>();
      node->kind = Node::Kind::negation;
      node->children = {parseNot()};
      return node;
    }
    return parsePrimary();
  }

  NodePointer parsePrimary() {
    if (isSymbol("(")) {
      advance();
      auto inner = parseOr();
      if (!isSymbol(")")) fail("a parenthesis is not closed");
      advance();
      return inner;
    }
    if (isKeyword("TRUEPREDICATE") || isKeyword("FALSEPREDICATE")) {
      auto node = std::make_shared<Node>();
      node->kind = isKeyword("TRUEPREDICATE") ? Node::Kind::truePredicate : Node::Kind::falsePredicate;
      advance();
      return node;
    }
    auto node = std::make_shared<Node>();
    node->kind = Node::Kind::comparison;
    node->left = parseOperand();
    node->op = parseOperator();
    node->right = parseOperand();
    return node;
  }

  PredicateOperator parseOperator() {
    PredicateOperator op;
    if (isSymbol("=") || isSymbol("==")) {
      op = PredicateOperator::equalTo;
    } else if (isSymbol("!=") || isSymbol("<>")) {
      op = PredicateOperator::notEqualTo;
    } else if (isSymbol("<")) {
      op = PredicateOperator::lessThan;
    } else if (isSymbol("<=") || isSymbol("=<")) {
      op = PredicateOperator::lessThanOrEqualTo;
    } else if (isSymbol(">")) {
      op = PredicateOperator::greaterThan;
    } else if (isSymbol(">=") || isSymbol("=>")) {
      op = PredicateOperator::greaterThanOrEqualTo;
    } else if (isKeyword("IN")) {
      op = PredicateOperator::in;
    } else {
      fail(token_.kind == TokenKind::end ? "a comparison operator is missing"
                                         : "\"" + token_.text + "\" is not a comparison operator");
    }
    advance();
    return op;
  }

  PredicateExpression parseOperand() {
    PredicateExpression expression;
    switch (token_.kind) {
      case TokenKind::argument:
        if (nextArgument_ >= arguments_.size()) fail("fewer arguments than %@ in the format");
        expression.constant = arguments_[nextArgument_++];
        break;
      case TokenKind::number: {
        if (token_.text.find('.') != std::string::npos) {
          expression.constant = Value(std::strtod(token_.text.c_str(), nullptr));
        } else {
          std::int64_t number = 0;
          std::from_chars(token_.text.data(), token_.text.data() + token_.text.size(), number);
          expression.constant = Value(number);
        }
        break;
      }
      case TokenKind::string:
        expression.constant = Value(token_.text);
        break;
      case TokenKind::identifier:
        if (isKeyword("nil") || isKeyword("NULL")) {
          expression.constant = Value();
        } else if (isKeyword("YES") || isKeyword("TRUE")) {
          expression.constant = Value(true);
        } else if (isKeyword("NO") || isKeyword("FALSE")) {
          expression.constant = Value(false);
        } else if (isKeyword("AND") || isKeyword("OR") || isKeyword("IN") || isKeyword("NOT")) {
          fail("a value is missing before \"" + token_.text + "\"");
        } else {
          std::string_view path = token_.text;
          while (true) {
            auto dot = path.find('.');
            auto component = path.substr(0, dot);
            if (component.empty()) fail("the key path \"" + token_.text + "\" has an empty component");
            expression.keyPath.emplace_back(component);
            if (dot == std::string_view::npos) break;
            path.remove_prefix(dot + 1);
          }
        }
        break;
      default:
        fail(token_.kind == TokenKind::end ? "a value is missing at the end" : "unexpected \"" + token_.text + "\"");
    }
    advance();
    return expression;
  }

  std::string_view format_;
  std::vector<Value> arguments_;
  std::size_t nextArgument_ = 0;
  std::size_t position_ = 0;
  Token token_;
};

Value evaluateExpression(const PredicateExpression& expression, ManagedObject& object) {
  if (!expression.isKeyPath()) return expression.constant;
  std::string path;
  for (const auto& component : expression.keyPath) path += (path.empty() ? "" : ".") + component;
  try {
    return object.valueForKeyPath(path);
  } catch (const StoreError& error) {
    // A destination that is gone reads as nil, as it does in the store.
    if (error.kind() == StoreErrorCode::managedObjectReferentialIntegrity) return Value();
    throw;
  }
}

}  // namespace

bool evaluateComparison(PredicateOperator op, const Value& left, const Value& right) {
  switch (op) {
    case PredicateOperator::equalTo:
      return left == right;
    case PredicateOperator::notEqualTo:
      return !(left == right);
    case PredicateOperator::lessThan:
      return (left <=> right) == std::partial_ordering::less;
    case PredicateOperator::lessThanOrEqualTo: {
      auto order = left <=> right;
      return order == std::partial_ordering::less || order == std::partial_ordering::equivalent;
    }
    case PredicateOperator::greaterThan:
      return (left <=> right) == std::partial_ordering::greater;
    case PredicateOperator::greaterThanOrEqualTo: {
      auto order = left <=> right;
      return order == std::partial_ordering::greater || order == std::partial_ordering::equivalent;
    }
    case PredicateOperator::in: {
      if (left.isNil()) return false;
      auto members = right.get<Value::Array>();
      if (!members) return left == right;
      for (const auto& member : *members) {
        if (left == member) return true;
      }
      return false;
    }
  }
  return false;
}

namespace {

bool evaluate(const Node& node, ManagedObject& object) {
  switch (node.kind) {
    case Node::Kind::truePredicate:
      return true;
    case Node::Kind::falsePredicate:
      return false;
    case Node::Kind::negation:
      return !evaluate(*node.children.front(), object);
    case Node::Kind::conjunction:
      for (const auto& child : node.children) {
        if (!evaluate(*child, object)) return false;
      }
      return true;
    case Node::Kind::disjunction:
      for (const auto& child : node.children) {
        if (evaluate(*child, object)) return true;
      }
      return false;
    case Node::Kind::comparison:
      return evaluateComparison(node.op, evaluateExpression(node.left, object), evaluateExpression(node.right, object));
  }
  return false;
}

std::string describe(const PredicateExpression& expression) {
  if (!expression.isKeyPath()) return expression.constant.description();
  std::string path;
  for (const auto& component : expression.keyPath) path += (path.empty() ? "" : ".") + component;
  return path;
}

std::string describe(const Node& node) {
  static const char* operators[] = {"==", "!=", "<", "<=", ">", ">=", "IN"};
  switch (node.kind) {
    case Node::Kind::truePredicate:
      return "TRUEPREDICATE";
    case Node::Kind::falsePredicate:
      return "FALSEPREDICATE";
    case Node::Kind::negation:
      return "NOT " + describe(*node.children.front());
    case Node::Kind::conjunction:
    case Node::Kind::disjunction: {
      std::string text = "(";
      for (std::size_t i = 0; i < node.children.size(); ++i) {
        if (i) text += node.kind == Node::Kind::conjunction ? " AND " : " OR ";
        text += describe(*node.children[i]);
      }
      return text + ")";
    }
    case Node::Kind::comparison:
      return describe(node.left) + " " + operators[static_cast<int>(node.op)] + " " + describe(node.right);
  }
  return "";
}

NodePointer compound(Node::Kind kind, const std::vector<Predicate>& subpredicates) {
  auto node = std::make_shared<Node>();
  node->kind = kind;
  for (const auto& predicate : subpredicates) {
    node->children.push_back(std::shared_ptr<const Node>(std::make_shared<Node>(predicate.root())));
  }
  if (node->children.empty()) {
    node->kind = kind == Node::Kind::conjunction ? Node::Kind::truePredicate : Node::Kind::falsePredicate;
  }
  return node;
}

}  // namespace

Predicate Predicate::withFormat(std::string_view format, std::vector<Value> arguments) {
  return Predicate(Parser(format, std::move(arguments)).parse());
}

Predicate Predicate::andPredicateWithSubpredicates(const std::vector<Predicate>& subpredicates) {
  return Predicate(compound(Node::Kind::conjunction, subpredicates));
}

Predicate Predicate::orPredicateWithSubpredicates(const std::vector<Predicate>& subpredicates) {
  return Predicate(compound(Node::Kind::disjunction, subpredicates));
}

Predicate Predicate::notPredicateWithSubpredicate(const Predicate& subpredicate) {
  return Predicate(compound(Node::Kind::negation, {subpredicate}));
}

Predicate Predicate::withValue(bool value) {
  auto node = std::make_shared<Node>();
  node->kind = value ? Node::Kind::truePredicate : Node::Kind::falsePredicate;
  return Predicate(node);
}

bool Predicate::evaluateWithObject(ManagedObject& object) const { return evaluate(*root_, object); }

std::string Predicate::predicateFormat() const { return describe(*root_); }

}  // namespace kestrona
