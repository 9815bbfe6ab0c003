#pragma once

#include "options.h"
#include "scene.h"
#include "search.h"

#include <string>
#include <vector>

/// The result as lines for people, or as one JSON object, with the notes that are worth telling.
std::string resultText(const PlanOptions& i_options, const std::vector<std::string>& i_notes,
                       const SearchResult& i_result);
std::string resultJson(const PlanOptions& i_options, const std::vector<std::string>& i_notes,
                       const SearchResult& i_result);

/// The path as a table: a header row, then distance, x, y, z, rx, ry, rz, and 1 for a waypoint, 0 for a sample.
std::string pathTable(const CorvPath& i_path, double i_step);

/// The scene with the part at poses along the path; without a path, at start and goal.
std::string scenePicture(const PlanScene& i_scene, const SearchResult& i_result);
