#!/bin/bash
# lint.sh BUILD_DIR [FILE...]: formatting, the rules of the layers, clang-tidy. Fails on any finding.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=$1
shift
mapfile -t files < <(if [ $# -gt 0 ]; then printf '%s\n' "$@"; else git ls-files '*.cpp' '*.h'; fi)

echo "Formatting of ${#files[@]} files"
clang-format-14 --dry-run --Werror "${files[@]}"

echo "Layers"
tools/layers.py

# Not the benchmarks, where the linker puts functions in the place of others under names that are reserved.
mapfile -t sources < <(printf '%s\n' "${files[@]}" | grep '\.cpp$' | grep -v '^bench/')
echo "clang-tidy on ${#sources[@]} sources"
printf '%s\0' "${sources[@]}" | xargs -0 -n 1 -P "$(nproc)" clang-tidy-14 -p "$build" --quiet \
    --header-filter "^$PWD/(src|simulators|tests|tools)/" 2> >(grep -v 'warnings generated\|Suppressed\|Use -header-filter' >&2)
