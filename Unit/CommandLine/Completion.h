/** @file
 * Completion of the program's command line in a shell.
 */
#pragma once

#include <CLI/CLI.hpp>

#include <string>

/**
 * Makes a script from the command tree, so that it knows what the program knows: subcommands, options, the words that
 * a type name lists as {one,other}, and files where a type name is FILE.
 * @return the script, to be read by bash
 */
std::string bashCompletion(const CLI::App& app);
