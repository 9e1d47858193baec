// Reading and rewriting the weights file.
#include "tools/tune/weights_file.h"

#include <cctype>
#include <cstdlib>
#include <cstdint>
#include <vector>

namespace tavrin::tool {

namespace {

constexpr std::size_t LineWidth = 110;

// Where one declaration stands in the text: from its type to its semicolon, and its values.
struct Declaration {
  std::size_t begin = 0, end = 0;   // end: one past the ';'
  std::size_t lineStart = 0;
  int rows = 1;                     // a two-dimensional table: its first dimension
  std::vector<int> numbers;         // mg, eg pairs for packed weights
};

bool isNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// Finds "int Name" or "Packed Name" as a whole word at the start of a line's code.
bool findDeclaration(const std::string& text, const WeightInfo& info, Declaration& d) {
  const std::string name = info.name;
  const std::string type = info.packed ? "Packed " : "int ";
  for (std::size_t at = text.find(type + name); at != std::string::npos; at = text.find(type + name, at + 1)) {
    const std::size_t after = at + type.size() + name.size();
    if (after < text.size() && isNameChar(text[after])) continue;
    std::size_t lineStart = text.rfind('\n', at);
    lineStart = lineStart == std::string::npos ? 0 : lineStart + 1;
    bool indentOnly = true;
    for (std::size_t i = lineStart; i < at; ++i) indentOnly = indentOnly && (text[i] == ' ' || text[i] == '\t');
    if (!indentOnly) continue;
    const std::size_t equals = text.find('=', after);
    const std::size_t semicolon = text.find(';', after);
    if (equals == std::string::npos || semicolon == std::string::npos || equals > semicolon) return false;
    d.begin = at;
    d.end = semicolon + 1;
    const std::string dims = text.substr(after, equals - after);
    const std::size_t second = dims.find("][");
    d.rows = second == std::string::npos ? 1 : std::atoi(dims.c_str() + dims.find('[') + 1);
    d.lineStart = lineStart;
    d.numbers.clear();
    for (std::size_t i = equals + 1; i < semicolon;) {
      if (text.compare(i, 2, "//") == 0) {
        i = text.find('\n', i);
        if (i == std::string::npos) break;
        continue;
      }
      const char c = text[i];
      if (std::isdigit(static_cast<unsigned char>(c)) || (c == '-' && i + 1 < semicolon && std::isdigit(static_cast<unsigned char>(text[i + 1])))) {
        std::size_t used = 0;
        d.numbers.push_back(std::stoi(text.substr(i, 12), &used));
        i += used;
      } else {
        ++i;
      }
    }
    return true;
  }
  return false;
}

std::string valueText(const WeightInfo& info, const std::int32_t* words, int i) {
  if (!info.packed) return std::to_string(words[i]);
  return "S(" + std::to_string(middlegameOf(words[i])) + ", " + std::to_string(endgameOf(words[i])) + ")";
}

// "Type Name = v;", "Type Name[N] = {v, v, ...};" wrapped under the brace when too long, or
// "Type Name[R][C] = {{...},\n {...}};" a row a line.
std::string declarationText(const WeightInfo& info, const std::int32_t* words, std::size_t indent, int rows) {
  std::string head = info.packed ? "Packed " : "int ";
  head += info.name;
  if (info.length == 1) {
    head += " = ";
    head += valueText(info, words, info.slot);
    head += ";";
    return head;
  }
  head += "[";
  if (rows > 1) {
    head += std::to_string(rows) + "][" + std::to_string(info.length / rows) + "] = {";
    const int columns = info.length / rows;
    std::string out = head;
    for (int r = 0; r < rows; ++r) {
      if (r > 0) {
        out += ",\n";
        out.append(indent + head.size(), ' ');
      }
      out += '{';
      for (int c = 0; c < columns; ++c) {
        if (c > 0) out += ", ";
        out += valueText(info, words, info.slot + r * columns + c);
      }
      out += '}';
    }
    return out + "};";
  }
  head += std::to_string(info.length);
  head += "] = {";
  const std::size_t continuation = indent + head.size();
  std::string out = head;
  std::size_t column = continuation;
  for (int k = 0; k < info.length; ++k) {
    std::string item = valueText(info, words, info.slot + k) + (k + 1 < info.length ? "," : "};");
    if (k > 0) {
      if (column + 1 + item.size() > LineWidth) {
        out += '\n';
        out.append(continuation, ' ');
        column = continuation;
      } else {
        out += " ";
        ++column;
      }
    }
    out += item;
    column += item.size();
  }
  return out;
}

}  // namespace

bool readWeightsText(const std::string& text, EvalWeights& out, std::string& error) {
  auto* words = reinterpret_cast<std::int32_t*>(&out);
  Declaration d;
  for (const WeightInfo& info : weightList()) {
    if (!findDeclaration(text, info, d)) {
      error = std::string("no declaration of ") + info.name;
      return false;
    }
    const std::size_t expected = std::size_t(info.length) * (info.packed ? 2 : 1);
    if (d.numbers.size() != expected) {
      error = std::string(info.name) + ": " + std::to_string(d.numbers.size()) + " numbers, expected " +
              std::to_string(expected);
      return false;
    }
    for (int k = 0; k < info.length; ++k)
      words[info.slot + k] = info.packed ? pack(d.numbers[2 * k], d.numbers[2 * k + 1]) : d.numbers[k];
  }
  return true;
}

std::string writeWeightsText(const std::string& text, const EvalWeights& weights) {
  const auto* words = reinterpret_cast<const std::int32_t*>(&weights);
  std::string out = text;
  Declaration d;
  for (const WeightInfo& info : weightList()) {
    if (!findDeclaration(out, info, d)) continue;
    const std::string replacement = declarationText(info, words, d.begin - d.lineStart, d.rows);
    // A comment after the declaration on its last line keeps its column if it can.
    std::size_t afterEnd = d.end;
    while (afterEnd < out.size() && out[afterEnd] == ' ') ++afterEnd;
    std::string tail;
    if (out.compare(afterEnd, 2, "//") == 0) {
      const std::size_t lastLineStart = out.rfind('\n', d.end - 1) + 1;
      const std::size_t oldColumn = afterEnd - (lastLineStart > d.lineStart ? lastLineStart : d.lineStart);
      const std::size_t newLast = replacement.rfind('\n');
      const std::size_t newEndColumn =
          newLast == std::string::npos ? d.begin - d.lineStart + replacement.size() : replacement.size() - newLast - 1;
      tail = std::string(oldColumn > newEndColumn ? oldColumn - newEndColumn : 1, ' ');
      out.replace(d.begin, afterEnd - d.begin, replacement + tail);
    } else {
      out.replace(d.begin, d.end - d.begin, replacement);
    }
  }
  return out;
}

}  // namespace tavrin::tool
