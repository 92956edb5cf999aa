// Formulas in several languages. Each has a writer, which makes the text of a term out of those of its
// arguments.

#include <qx/platform/Numbers.h>
#include <qx/platform/Text.h>
#include <qx/symbolic_regression/Formula.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

namespace qx {

namespace {

using TTerm = TQXFormula::TTerm;

// How tightly a text holds together.
enum TBinding : std::uint8_t { biComparison, biSum, biProduct, biSign, biPower, biWhole };

struct TPiece {
  std::string Text;
  TBinding Binding = biWhole;
  bool HasTallBrackets = false; // that grow with what they hold

  // In brackets where it holds together less tightly than what it comes into.
  std::string Within(TBinding Least) const {
    if (Binding >= Least) {
      return Text;
    }
    return HasTallBrackets ? "\\left(" + Text + "\\right)" : "(" + Text + ")";
  }
};

using TPieces = std::vector<TPiece>;

TPiece Infix(const TPieces& A, const char* Sign, TBinding Binding) {
  const bool Reorders = Binding == biComparison; // neither side may hold another one
  return {A[0].Within(static_cast<TBinding>(Binding + (Reorders ? 1 : 0))) + " " + Sign + " " +
              A[1].Within(static_cast<TBinding>(Binding + 1)),
          Binding};
}

TPiece Called(std::string_view Name, const TPieces& Arguments) {
  std::string Text = std::string(Name) + "(";
  for (const TPiece& Argument : Arguments) {
    Text += (&Argument == &Arguments.front() ? "" : ", ") + Argument.Text;
  }
  return {Text + ")", biWhole};
}

TPiece Signed(const TPiece& Value) { return {"-" + Value.Within(biSign), biSum}; }

TPiece NumberPiece(double Value, const char* Infinite, const char* NoNumber) {
  std::string Text = NumberText(std::fabs(Value));
  if (std::isnan(Value)) {
    return {NoNumber, biWhole};
  }
  if (std::isinf(Value)) {
    Text = Infinite;
  }
  return std::signbit(Value) ? TPiece{"-" + Text, biSum} : TPiece{Text, biWhole};
}

const char* ComparisonSign(TBlockOperation Operator) {
  constexpr const char* Signs[] = {"<", "<=", ">", ">=", "==", "!="};
  return Operator >= boLess && Operator <= boNotEqual ? Signs[Operator - boLess] : nullptr;
}

// A text between quotes, on one line.
std::string Literal(const std::string& Text) {
  std::string Result = "\"";
  for (const char C : Text) {
    if (C == '"' || C == '\\') {
      Result += '\\';
    }
    Result += C == '\n' ? "\\n" : std::string(1, static_cast<unsigned char>(C) < ' ' ? ' ' : C);
  }
  return Result + '"';
}

// --- Infix -------------------------------------------------------------------------------------------------

// Math mode has blanks, hyphens and the like mean something else, or nothing.
bool IsOfWords(char C) {
  return (C >= 'a' && C <= 'z') || (C >= 'A' && C <= 'Z') || (C >= '0' && C <= '9') || C == '_' ||
         static_cast<signed char>(C) < 0;
}

// A name that could be taken for a formula stands between backticks, as R and the tables of Python have it.
std::string QuotedName(const std::string& Name) {
  const bool IsPlain = !Name.empty() && IsOfWords(Name[0]) && !(Name[0] >= '0' && Name[0] <= '9') &&
                       std::ranges::all_of(Name, [](char C) { return IsOfWords(C) || C == '.'; });
  if (IsPlain) {
    return Name;
  }
  std::string Quoted = "`";
  for (const char C : Name) {
    Quoted += C == '`' ? "``" : std::string(1, C);
  }
  return Quoted + '`';
}

class TInfixWriter {
public:
  static constexpr bool HasTallBrackets = false;
  TPiece Number(double Value) const { return NumberPiece(Value, "inf", "nan"); }
  TPiece Variable(const std::string& Name) const { return {QuotedName(Name), biWhole}; }
  TPiece Call(const std::string& Name, const TPieces& A) const { return Called(Name, A); }
  TPiece Operation(TBlockOperation Operator, const TPieces& A) const {
    switch (Operator) {
    case boAdd:
      return Infix(A, "+", biSum);
    case boSub:
      return Infix(A, "-", biSum);
    case boMul:
      return Infix(A, "*", biProduct);
    case boDiv:
      return Infix(A, "/", biProduct);
    case boInv:
      return Infix({{"1", biWhole}, A[0]}, "/", biProduct);
    case boNeg:
      return Signed(A[0]);
    case boPow:
      return {Called("abs", {A[0]}).Text + "^" + A[1].Within(biWhole), biPower};
    case boSquare:
      return {A[0].Within(biWhole) + "^2", biPower};
    case boCube:
      return {A[0].Within(biWhole) + "^3", biPower};
    case boSqrt:
    case boLog:
      return Called(LowerText(NameOf(Operator)), {Called("abs", {A[0]})});
    default:
      break;
    }
    if (const char* const Sign = ComparisonSign(Operator)) {
      return Infix(A, Sign, biComparison);
    }
    return Called(LowerText(NameOf(Operator)), A);
  }
};

// --- LaTeX -------------------------------------------------------------------------------------------------

class TLaTeXWriter {
public:
  static constexpr bool HasTallBrackets = true;
  TPiece Number(double Value) const {
    TPiece Piece = NumberPiece(Value, "\\infty", "\\mathrm{NaN}");
    if (const auto Exponent = Piece.Text.find('e'); std::isfinite(Value) && Exponent != std::string::npos) {
      std::string Power = Piece.Text.substr(Exponent + 1);
      const std::string Sign = Power[0] == '-' ? "-" : "";
      Power.erase(0, Power.find_first_not_of("+-0"));
      return {Piece.Text.substr(0, Exponent) + " \\cdot 10^{" + Sign + Power + "}",
              std::min(Piece.Binding, biProduct)};
    }
    return Piece;
  }
  TPiece Variable(const std::string& Name) const {
    const bool BeginsWithLetter =
        !Name.empty() && ((Name[0] >= 'a' && Name[0] <= 'z') || (Name[0] >= 'A' && Name[0] <= 'Z'));
    if (BeginsWithLetter && Name.find_first_not_of("0123456789", 1) == std::string::npos) {
      return {Name.substr(0, 1) + (Name.size() > 1 ? "_{" + Name.substr(1) + "}" : ""), biWhole};
    }
    return {Upright(Name, "\\mathrm"), biWhole};
  }
  TPiece Call(const std::string& Name, const TPieces& A) const {
    return InBrackets(Upright(Name, "\\operatorname"), A);
  }
  TPiece Operation(TBlockOperation Operator, const TPieces& A) const {
    switch (Operator) {
    case boAdd:
      return Infix(A, "+", biSum);
    case boSub:
      return Infix(A, "-", biSum);
    case boMul:
      return Infix(A, "\\cdot", biProduct);
    case boDiv:
      return Fraction(A[0].Text, A[1].Text);
    case boInv:
      return Fraction("1", A[0].Text);
    case boAQ:
      return Fraction(A[0].Text, "\\sqrt{1 + " + Raised(A[1], "2").Text + "}");
    case boNeg:
      return Signed(A[0]);
    case boSquare:
      return Raised(A[0], "2");
    case boCube:
      return Raised(A[0], "3");
    case boSqrt:
      return {"\\sqrt{" + Bars(A[0]) + "}", biWhole};
    case boCbrt:
      return {"\\sqrt[3]{" + A[0].Text + "}", biWhole};
    case boPow:
      return {Bars(A[0]) + "^{" + A[1].Text + "}", biPower};
    case boExp:
      return {"e^{" + A[0].Text + "}", biPower};
    case boLog:
      return {"\\ln " + Bars(A[0]), biPower};
    case boAbs:
      return {Bars(A[0]), biWhole};
    case boIf:
      return {"\\begin{cases} " + A[1].Text + " & \\text{if } " + A[0].Within(biSum) + " > 0 \\\\ " +
                  A[2].Text + " & \\text{otherwise} \\end{cases}",
              biComparison};
    default:
      return Other(Operator, A);
    }
  }

private:
  // A name by a command of math mode, or as text when it is no word.
  static std::string Upright(const std::string& Name, const std::string& Command) {
    const bool IsWord = !(Name[0] >= '0' && Name[0] <= '9') && std::ranges::all_of(Name, IsOfWords);
    return IsWord ? Command + "{" + Escaped(Name) + "}" : "\\text{" + Escaped(Name) + "}";
  }
  static std::string Escaped(const std::string& Text) {
    std::string Result;
    for (const char C : Text) {
      switch (C) {
      case '\\':
        Result += "\\textbackslash{}";
        break;
      case '~':
        Result += "\\textasciitilde{}";
        break;
      case '^':
        Result += "\\textasciicircum{}";
        break;
      case '#':
      case '$':
      case '%':
      case '&':
      case '_':
      case '{':
      case '}':
        Result += '\\';
        [[fallthrough]];
      default:
        Result += C;
      }
    }
    return Result;
  }
  static std::string Bars(const TPiece& Value) { return "\\left|" + Value.Text + "\\right|"; }
  static TPiece Fraction(const std::string& Above, const std::string& Below) {
    return {"\\frac{" + Above + "}{" + Below + "}", biWhole};
  }
  static TPiece Raised(const TPiece& Value, const char* Power) {
    return {Value.Within(biWhole) + "^{" + Power + "}", biPower};
  }
  static TPiece InBrackets(const std::string& Name, const TPieces& A) {
    const std::string Arguments = Called("", A).Text;
    return {Name + "\\left(" + Arguments.substr(1, Arguments.size() - 2) + "\\right)", biPower};
  }
  static TPiece Other(TBlockOperation Operator, const TPieces& A) {
    constexpr const char* Signs[] = {"<", "\\le", ">", "\\ge", "=", "\\ne"};
    if (ComparisonSign(Operator) != nullptr) { // 1 where it holds (Iverson's brackets)
      return {"\\left[" + Infix(A, Signs[Operator - boLess], biComparison).Text + "\\right]", biWhole};
    }
    const std::string Name = LowerText(NameOf(Operator));
    constexpr std::string_view Own[] = {"sin", "cos", "tan", "tanh", "min", "max"};
    const bool IsOwn = std::ranges::find(Own, Name) != std::end(Own);
    return InBrackets(IsOwn ? "\\" + Name : "\\operatorname{" + Name + "}", A);
  }
};

// --- C++ and Python ----------------------------------------------------------------------------------------

// Names as identifiers, different ones for different names.
class TIdentifiers {
public:
  // What a name is of: those of different kinds differ.
  enum TKind : std::uint8_t { Formula, Function, Variable };

  void Reserve(const std::string& Identifier) { FTaken.insert(Identifier); }
  const std::string& Of(TKind Kind, const std::string& Name) {
    const auto [Place, IsNew] = FNames.try_emplace({Kind, Name});
    if (IsNew) {
      std::string Identifier;
      for (const char C : Name) {
        const bool Fits = (C >= 'a' && C <= 'z') || (C >= 'A' && C <= 'Z') || (C >= '0' && C <= '9');
        Identifier += Fits ? C : '_';
      }
      constexpr std::string_view Macros[] = {"M_",    "FP_",  "HUGE_", "MATH_",
                                             "EXIT_", "SNAN", "FD_"}; // that begin so
      const bool IsMacro =
          std::ranges::any_of(Macros, [&](std::string_view Macro) { return Identifier.starts_with(Macro); });
      if (IsMacro || Identifier.empty() || Identifier[0] == '_' ||
          (Identifier[0] >= '0' && Identifier[0] <= '9')) {
        Identifier = "v" + Identifier;
      }
      while (IsReserved(Identifier) || !FTaken.insert(Identifier).second) {
        Identifier += '_';
      }
      Place->second = Identifier;
    }
    return Place->second;
  }

private:
  // Of both languages, and what the written functions use themselves.
  static bool IsReserved(const std::string& Name) {
    constexpr std::string_view Reserved =
        " BIG_ENDIAN BYTE_ORDER False INFINITY LITTLE_ENDIAN MAXFLOAT MB_CUR_MAX NAN NFDBITS NULL None "
        "PDP_ENDIAN RAND_MAX True WCONTINUED WEXITED WEXITSTATUS WIFCONTINUED WIFEXITED WIFSIGNALED "
        "WIFSTOPPED WNOHANG WNOWAIT WSTOPPED WSTOPSIG WTERMSIG WUNTRACED alloca be16toh be32toh be64toh "
        "htobe16 htobe32 htobe64 htole16 htole32 htole64 issignaling issubnormal le16toh le32toh le64toh "
        "linux llogb abs acos acosh alignas alignof and and_eq as asin asinh "
        "asm assert async atan atan2 atanh auto await bitand bitor bool break case catch cbrt ceil "
        "char char16_t char32_t char8_t class co_await co_return co_yield compl concept const "
        "const_cast consteval constexpr constinit continue copysign cos cosh decltype def default del "
        "delete div do double dynamic_cast elif else enum erf erfc except exp exp2 explicit expm1 "
        "export extern fabs false fdim finally float floor fma fmax fmin fmod for frexp friend from "
        "gamma global goto hypot i386 if ilogb import in inline int is isfinite isinf isnan j0 j1 jn "
        "lambda ldexp lgamma linux llrint llround log log10 log1p log2 logb long lrint lround main "
        "modf mutable namespace nan nearbyint new nextafter nexttoward noexcept nonlocal not not_eq "
        "np nullptr operator or or_eq pass pow print private protected public raise register "
        "reinterpret_cast remainder remquo requires return rint round scalb scalbln scalbn short "
        "signbit signed signgam significand sin sincos sinh sizeof sqrt static static_assert "
        "static_cast std struct switch tan tanh template tgamma this thread_local throw true trunc "
        "try typedef typeid typename union unix unsigned using virtual void volatile wchar_t while "
        "with xor xor_eq y0 y1 yield yn ";
    return Reserved.find(" " + Name + " ") != std::string_view::npos;
  }

  std::map<std::pair<TKind, std::string>, std::string> FNames;
  std::set<std::string> FTaken;
};

// A function that a source needs besides the formula.
struct THelper {
  TBlockOperation Operator;
  const char* Name;
  const char* Cpp;
  const char* Python;
};

constexpr THelper Helpers[] = {
    {boDiv, "protected_div", "(double x, double y) { return y == 0 ? 1 : x / y; }",
     "(x, y):\n    return np.where(np.equal(y, 0), 1.0, np.divide(x, y))\n"},
    {boAQ, "analytic_quotient", "(double x, double y) { return x / std::sqrt(1 + y * y); }",
     "(x, y):\n    return x / np.sqrt(1 + y * y)\n"},
    {boInv, "protected_inv", "(double x) { return x == 0 ? 1 : 1 / x; }",
     "(x):\n    return np.where(np.equal(x, 0), 1.0, np.divide(1.0, x))\n"},
    {boSquare, "square", "(double x) { return x * x; }", "(x):\n    return x * x\n"},
    {boCube, "cube", "(double x) { return x * x * x; }", "(x):\n    return x * x * x\n"},
    {boSqrt, "protected_sqrt", "(double x) { return std::sqrt(std::fabs(x)); }",
     "(x):\n    return np.sqrt(np.abs(x))\n"},
    {boPow, "protected_pow", "(double x, double y) { return x == 0 ? 0 : std::pow(std::fabs(x), y); }",
     "(x, y):\n    return np.where(np.equal(x, 0), 0.0, np.power(np.abs(x) * 1.0, y))\n"},
    {boLog, "protected_log", "(double x) { return x == 0 ? 0 : std::log(std::fabs(x)); }",
     "(x):\n    return np.where(np.equal(x, 0), 0.0, np.log(np.abs(x)))\n"},
    {boMin, "lesser", "(double x, double y) { return y < x ? y : x; }",
     "(x, y):\n    return np.where(np.less(y, x), y, x)\n"},
    {boMax, "greater", "(double x, double y) { return y > x ? y : x; }",
     "(x, y):\n    return np.where(np.greater(y, x), y, x)\n"},
    {boIf, "choose", "(double x, double y, double z) { return x > 0 ? y : z; }",
     "(x, y, z):\n    return np.where(np.greater(x, 0), y, z)\n"},
    {boAnd, "both", "(double x, double y) { return x > 0 && y > 0 ? 1 : 0; }",
     "(x, y):\n    return np.where(np.greater(x, 0) & np.greater(y, 0), 1.0, 0.0)\n"},
    {boOr, "either", "(double x, double y) { return x > 0 || y > 0 ? 1 : 0; }",
     "(x, y):\n    return np.where(np.greater(x, 0) | np.greater(y, 0), 1.0, 0.0)\n"},
    {boNot, "negation", "(double x) { return x > 0 ? 0 : 1; }",
     "(x):\n    return np.where(np.greater(x, 0), 0.0, 1.0)\n"},
    {boNand, "not_both", "(double x, double y) { return x > 0 && y > 0 ? 0 : 1; }",
     "(x, y):\n    return np.where(np.greater(x, 0) & np.greater(y, 0), 0.0, 1.0)\n"},
    {boNor, "neither", "(double x, double y) { return x > 0 || y > 0 ? 0 : 1; }",
     "(x, y):\n    return np.where(np.greater(x, 0) | np.greater(y, 0), 0.0, 1.0)\n"},
    {boXor, "one_of_both", "(double x, double y) { return (x > 0) != (y > 0) ? 1 : 0; }",
     "(x, y):\n    return np.where(np.not_equal(np.greater(x, 0), np.greater(y, 0)), 1.0, 0.0)\n"}};

const THelper* HelperFor(TBlockOperation Operator) {
  const auto* const Found = std::ranges::find(Helpers, Operator, &THelper::Operator);
  return Found != std::end(Helpers) ? Found : nullptr;
}

class TSourceWriter {
public:
  static constexpr bool HasTallBrackets = false;
  TSourceWriter(TFormulaStyle Style, TIdentifiers& Identifiers)
      : FIsPython(Style == fsPython), FIdentifiers(Identifiers) {}

  TPiece Number(double Value) const {
    TPiece Piece = NumberPiece(Value, FIsPython ? "np.inf" : "INFINITY", FIsPython ? "np.nan" : "NAN");
    if (std::isfinite(Value) && Piece.Text.find_first_of(".e") == std::string::npos) {
      Piece.Text += ".0";
    }
    return Piece;
  }
  TPiece Variable(const std::string& Name) const {
    return {FIdentifiers.Of(TIdentifiers::Variable, Name), biWhole};
  }
  TPiece Call(const std::string& Name, const TPieces& A) const {
    return Called(FIdentifiers.Of(TIdentifiers::Function, Name), A);
  }
  TPiece Operation(TBlockOperation Operator, const TPieces& A) const {
    switch (Operator) {
    case boAdd:
      return Infix(A, "+", biSum);
    case boSub:
      return Infix(A, "-", biSum);
    case boMul:
      return Infix(A, "*", biProduct);
    case boNeg:
      return Signed(A[0]);
    default:
      break;
    }
    if (const THelper* const Helper = HelperFor(Operator)) {
      return Called(Helper->Name, A);
    }
    if (const char* const Sign = ComparisonSign(Operator)) {
      const std::string Condition = Infix(A, Sign, biComparison).Text;
      return {FIsPython ? "np.where(" + Condition + ", 1.0, 0.0)" : "(" + Condition + " ? 1.0 : 0.0)",
              biWhole};
    }
    const std::string Name = Operator == boAbs ? (FIsPython ? "abs" : "fabs") : LowerText(NameOf(Operator));
    return Called((FIsPython ? "np." : "std::") + Name, A);
  }

private:
  bool FIsPython;
  TIdentifiers& FIdentifiers;
};

// The text of the last term.
template <class TWriter>
std::string Written(const std::vector<TTerm>& Terms, const TWriter& Writer) {
  TPieces Texts;
  for (const TTerm& Term : Terms) {
    TPieces Arguments;
    for (const std::size_t Argument : Term.Arguments) {
      Arguments.push_back(Texts[Argument]);
    }
    switch (Term.Kind) {
    case TQXFormula::Constant:
      Texts.push_back(Writer.Number(Term.Value));
      break;
    case TQXFormula::Variable:
      Texts.push_back(Writer.Variable(Term.Name));
      break;
    case TQXFormula::Call:
      Texts.push_back(Writer.Call(Term.Name, Arguments));
      break;
    case TQXFormula::Operation:
      Texts.push_back(Writer.Operation(Term.Operator, Arguments));
      break;
    }
    Texts.back().HasTallBrackets = TWriter::HasTallBrackets;
  }
  return Texts.back().Text;
}

std::string Source(const TQXFormula& Formula, TFormulaStyle Style, const std::string& Name) {
  const bool IsPython = Style == fsPython;
  TIdentifiers Identifiers;
  std::string Head;
  for (const THelper& Helper : Helpers) {
    Identifiers.Reserve(Helper.Name);
    const bool IsUsed = std::ranges::any_of(Formula.Terms(), [&](const TTerm& Term) {
      return Term.Kind == TQXFormula::Operation && Term.Operator == Helper.Operator;
    });
    if (IsUsed) {
      Head += IsPython ? "def " + std::string(Helper.Name) + Helper.Python + "\n\n"
                       : "static inline double " + std::string(Helper.Name) + Helper.Cpp + "\n";
    }
  }
  // The formula itself keeps its name if it can, whatever variables and functions of the host are called.
  const std::string Own = Identifiers.Of(TIdentifiers::Formula, Name);
  std::string Parameters;
  std::string Columns;     // a line for each
  std::string Conversions; // in Python, where whole numbers overflow and truths do not add up
  for (const std::string& Variable : Formula.Variables()) {
    const std::string Identifier = Identifiers.Of(TIdentifiers::Variable, Variable);
    Parameters += (Parameters.empty() ? "" : ", ") + std::string(IsPython ? "" : "double ") + Identifier;
    Columns += (IsPython ? "    " : "// ") + Identifier + ": column " + Literal(Variable) + "\n";
    Conversions.append("    ")
        .append(Identifier)
        .append(" = np.asarray(")
        .append(Identifier)
        .append(", dtype=float)\n");
  }
  const std::string Value = Written(Formula.Terms(), TSourceWriter(Style, Identifiers));
  if (IsPython) {
    const std::string Documentation =
        Columns.empty() ? "" : "    \"\"\"Arguments:\n\n" + Columns + "    \"\"\"\n" + Conversions;
    return "import numpy as np\n\n\n" + Head + "def " + Own + "(" + Parameters + "):\n" + Documentation +
           "    return " + Value + "\n";
  }
  return "#include <cmath>\n\n" + Head + (Head.empty() ? "" : "\n") + Columns + "double " + Own + "(" +
         Parameters + ") { return " + Value + "; }\n";
}

// --- DOT ---------------------------------------------------------------------------------------------------

std::string DotLabel(const TTerm& Term) {
  std::string Text = Term.Name;
  if (Term.Kind == TQXFormula::Constant) {
    Text = NumberText(Term.Value);
  } else if (Term.Kind == TQXFormula::Operation) {
    constexpr std::string_view Signs[] = {"+", "-", "*", "/"};
    Text = Term.Operator <= boDiv ? Signs[Term.Operator] : NameOf(Term.Operator);
  }
  return Literal(Text);
}

// A node for each place that a term has in the tree.
std::string Graph(const std::vector<TTerm>& Terms, const std::string& Name) {
  struct TPlace {
    std::size_t Term;
    int Parent;
  };
  std::string Text = "digraph " + Literal(Name) + " {\n";
  std::vector<TPlace> Pending = {{Terms.size() - 1, -1}};
  for (int Number = 0; !Pending.empty(); ++Number) {
    const TPlace Place = Pending.back();
    Pending.pop_back();
    const TTerm& Term = Terms[Place.Term];
    const std::string Own = "n" + std::to_string(Number);
    Text += "  " + Own + " [label=" + DotLabel(Term) + (Term.Arguments.empty() ? ", shape=box" : "") + "];\n";
    if (Place.Parent >= 0) {
      Text += "  n" + std::to_string(Place.Parent) + " -> " + Own + ";\n";
    }
    for (std::size_t I = Term.Arguments.size(); I-- > 0;) {
      Pending.push_back({Term.Arguments[I], Number});
    }
  }
  return Text + "}\n";
}

} // namespace

std::string TQXFormula::Text(TFormulaStyle Style, std::string_view Name) const {

  switch (Style) {
  case fsInfix:
    return Written(FTerms, TInfixWriter());
  case fsLaTeX:
    return Written(FTerms, TLaTeXWriter());
  case fsCpp:
  case fsPython:
    return Source(*this, Style, std::string(Name));
  case fsDOT:
    return Graph(FTerms, std::string(Name));
  }
  throw std::out_of_range("Style: there is no value " + std::to_string(static_cast<int>(Style)));
}

} // namespace qx
