#!/usr/bin/env bash
# Fails, and shows the difference, unless the C++ program in README.md is examples/01_first_path.cpp to the letter.
set -euo pipefail
cd "$(dirname "$0")/.."
diff <(sed -n '/^```cpp$/,/^```$/{/^```/d;p}' README.md) examples/01_first_path.cpp
