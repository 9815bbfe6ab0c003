#pragma once

#include "options.h"

#include <string>

/// One line on standard error, whatever the text holds.
void printError(const std::string& i_error);

/// Tells before the search whether the files asked for can be written, and that none takes the place of another or of
/// a mesh. Nothing is left behind. @return false with one line in `o_error`.
bool checkOutputs(const PlanOptions& i_options, std::string& o_error);

/// Writes the whole file or leaves what is there. @return false with one line in `o_error`.
bool writeFile(const std::string& i_path, const std::string& i_content, std::string& o_error);
