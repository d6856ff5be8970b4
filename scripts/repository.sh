# shellcheck shell=bash
# The files of the repository, for the checks of the tree. Sourced, never started.

# repositoryFiles PATTERN...: the files of the current folder that match one of the patterns, each
# with a zero byte behind it: what git knows or would add; in an unpacked archive everything outside
# the build folder.
repositoryFiles() {
  local file patterns=() pattern
  if git -c safe.directory='*' rev-parse --is-inside-work-tree >/dev/null 2>&1; then
    # What is deleted is still known.
    while IFS= read -r -d '' file; do
      if [[ -f $file ]]; then printf '%s\0' "$file"; fi
    done < <(git -c safe.directory='*' ls-files -z --cached --others --exclude-standard -- "$@")
  else
    for pattern in "$@"; do patterns+=(-o -name "$pattern"); done
    find . -path ./build -prune -o -type f \( "${patterns[@]:1}" \) -print0
  fi
}
