#pragma once
// The bash completion script, made from the command tree itself so it never falls behind.

#include <CLI/CLI.hpp>

#include <string>

namespace brenmoor::cli {

std::string bashCompletion(const CLI::App& app);

}  // namespace brenmoor::cli
