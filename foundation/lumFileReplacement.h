#pragma once

#include <string>

/// Writes a file whole or not at all.
///
/// The text goes to a temporary file in the same folder, which takes the name once it is complete on the disk. Whatever
/// happens before leaves a file of that name as it was, but may leave the temporary file behind if the process dies.
/// A symbolic link is followed. Only a regular file is replaced.
/// @return empty, or what went wrong.
std::string lumReplaceFile(const std::string& i_path, const std::string& i_text);

/// Reads a regular file whole. @return empty, or what went wrong.
std::string lumReadFile(const std::string& i_path, std::string& o_text);
