#include "Manual.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <fmt/format.h>
#include <vector>

namespace qxevolve {

namespace {

std::vector<const CLI::App*> Commands(const CLI::App& App) {
  return App.get_subcommands([](const CLI::App*) { return true; });
}

// The options' long names, and those of files.
std::string OptionWords(const CLI::App& Command) {
  std::string Words;
  for (const CLI::Option* const Option : Command.get_options()) {
    for (const std::string& Name : Option->get_lnames()) {
      Words += (Words.empty() ? "--" : " --") + Name;
    }
  }
  return Words;
}

// The values that options choose from.
std::string ValueCases(const CLI::App& App) {
  std::string Cases;
  for (const CLI::App* const Command : Commands(App)) {
    for (const CLI::Option* const Option : Command->get_options()) {
      const std::string Type = Option->get_type_name(); // as in "NAME:{mse,rmse}"
      const auto Begin = Type.find(":{");
      const std::string Pattern =
          "--" + (Option->get_lnames().empty() ? "" : Option->get_lnames().front()) + ")";
      if (Begin == std::string::npos || !Type.ends_with('}') || Cases.find(Pattern) != std::string::npos) {
        continue;
      }
      std::string Values = Type.substr(Begin + 2, Type.size() - Begin - 3);
      std::ranges::replace(Values, ',', ' ');
      Cases += fmt::format("  {} words=\"{}\" ;;\n", Pattern, Values);
    }
  }
  return Cases;
}

} // namespace

std::string ManualText(const CLI::App& App) {
  std::string Text = "# qxevolve\n\nMade of the program's own `--help`, by `qxevolve manual`.\n\n```\n" +
                     App.help() + "```\n";
  for (const CLI::App* const Command : Commands(App)) {
    Text += fmt::format("\n## qxevolve {}\n\n```\n{}```\n", Command->get_name(), Command->help("qxevolve"));
  }
  return Text;
}

std::string CompletionText(const CLI::App& App) {
  std::string Names;
  std::string Cases;
  for (const CLI::App* const Command : Commands(App)) {
    Names += (Names.empty() ? "" : " ") + Command->get_name();
    Cases += fmt::format("    {}) words=\"{}\" ;;\n", Command->get_name(), OptionWords(*Command));
  }
  return fmt::format(
      R"(# Completion of qxevolve for bash; for zsh after: autoload bashcompinit && bashcompinit
_qxevolve() {{
  local words= current=${{COMP_WORDS[COMP_CWORD]}} previous=${{COMP_WORDS[COMP_CWORD-1]}}
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    COMPREPLY=($(compgen -W "{} --help --version" -- "$current"))
    return
  fi
  case $previous in
{}  -t|--target|--weights|--ignore)
    local file IFS=$'\n'
    for file in "${{COMP_WORDS[@]}}"; do
      case $file in *.csv) [ -r "$file" ] && words=$(head -n 1 "$file" | sed 's/^\xef\xbb\xbf//' | tr -d '"\r' | tr ',;\t' '\n\n\n') ;; esac
    done ;;
  esac
  if [ -n "$words" ]; then
    COMPREPLY=($(compgen -W "$words" -- "$current"))
    return
  fi
  case ${{COMP_WORDS[1]}} in
{}  esac
  case $current in
  -*) COMPREPLY=($(compgen -W "$words" -- "$current")) ;;
  *) COMPREPLY=($(compgen -f -- "$current")) ;;
  esac
}}
complete -o filenames -F _qxevolve qxevolve
)",
      Names, ValueCases(App), Cases);
}

} // namespace qxevolve
