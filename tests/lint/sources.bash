# shellcheck shell=bash
# The files of the project, for the checks beside this file. Usage: source it with $1 the project.

cd "$1" || exit

# The project's files that git knows or would add, by pathspec; without git (not installed, someone
# else's clone, an unpacked archive) all files below the tree but git's own and the build folder.
project_files() {
    if git rev-parse --git-dir >/dev/null 2>&1; then
        git ls-files --cached --others --exclude-standard -- "$@" | while IFS= read -r file; do
            if [ -f "$file" ]; then printf '%s\n' "$file"; fi
        done
    else
        local pattern
        for pattern in "$@"; do
            find . \( -path ./build -o -path ./.git \) -prune -o -type f -path "./$pattern" -print | sed 's|^\./||'
        done
    fi
}

# C++ and C sources of user space; the kernel module follows the kernel's style.
cxx_files() {
    project_files '*.cpp' '*.h' '*.c' | grep -v '^simulated_terminal/kernel/'
}

# What clang-tidy is called with, one a line; $2 adds to the checks of .clang-tidy or takes away. The
# plugin of the build folder $1, where there is one, keeps it to the project's own declarations.
tidy_options() {
    local plugin=$1/tests/lint/own_declarations.so checks=${2:-}
    if [ -f "$plugin" ]; then
        checks+=,zr-own-declarations
        printf '%s\n' "--load=$plugin"
    fi
    printf '%s\n' --quiet "--checks=${checks#,}"
}
