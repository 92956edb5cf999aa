#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <sstream>
#include <string>

namespace qxevolve {

/// Text in lines of at most `Width` characters.
inline std::string Wrapped(const std::string& Text, std::size_t Width) {
  std::istringstream Words(Text);
  std::string Result;
  std::size_t Length = 0;
  for (std::string Word; Words >> Word; Length += Word.size() + 1) {
    if (Length + Word.size() > Width) {
      Result += '\n';
      Length = 0;
    } else if (Length > 0) {
      Result += ' ';
    }
    Result += Word;
  }
  return Result;
}

/// Help in two columns: without the names of checks, which the messages tell.
class THelpFormatter : public CLI::Formatter {
public:
  THelpFormatter() { column_width(Column); }
  std::string make_footer(const CLI::App* App) const override {
    return App->get_footer().empty() ? "" : "\n" + App->get_footer();
  }
  std::string make_option_opts(const CLI::Option* Option) const override {
    if (Option->get_type_size() == 0) {
      return "";
    }
    const std::string Type = Option->get_type_name();
    return ' ' + Type.substr(0, Type.find(':'));
  }
  std::string make_option_desc(const CLI::Option* Option) const override {
    const bool HasDefault = Option->get_type_size() != 0 && !Option->get_default_str().empty();
    return Wrapped(Option->get_description() + (HasDefault ? " [" + Option->get_default_str() + "]" : ""),
                   Width - Column);
  }

private:
  static constexpr std::size_t Column = 30;
  static constexpr std::size_t Width = 100;
};

} // namespace qxevolve
