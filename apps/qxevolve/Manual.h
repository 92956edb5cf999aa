#pragma once

#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace qxevolve {

/// The manual, in Markdown, made of what `--help` says.
std::string ManualText(const CLI::App& App);

/// A script that completes commands, options and their values in bash; zsh takes it after `bashcompinit`.
std::string CompletionText(const CLI::App& App);

} // namespace qxevolve
