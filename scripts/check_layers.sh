#!/usr/bin/env bash
# Checks that every #include "..." of our code crosses the layers downwards only, and names
# each include that doesn't as "file:line: ..." with the rule it breaks.
#
# Usage: scripts/check_layers.sh [ROOT]    (ROOT: the tree to check, by default this repository)
# Exit status: 0 no crossing, 1 crossings (one line each on stderr), 2 bad usage.
#
# Scanned: src/, tools/, fuzz/, bench/ and tests/ (but not tests/data, which holds inputs). An
# include is looked up as the compiler does: beside the including file, then under src/, then
# under tests/ (test code) or tools/ (the tools). Includes of anything else (system headers,
# GoogleTest) are not ours and are skipped.
#
# The layers, lowest first; a file includes its own layer and the ones below it:
#   foundation    src/foundation includes nothing of ours above it, and inside it the order
#                 strings < streams < xml < misc holds.
#   package       src/package builds on foundation only.
#   engine        src/installer: foundation, package and itself; never src/linux, a program
#                 or a front end. Inside it the areas go
#                     model < interface < transaction < uninstall < wizard < installer.h
#                 The interface is what the engine sees of a front end (wizard/installer_ui.h,
#                 wizard/exchange_enums.h) and includes foundation only. So the model (template,
#                 variables, conditions, cabinet) names no header of the wizard, not even the
#                 interface, and the transaction and uninstall areas reach the wizard only
#                 through the interface, to report to a front end.
#                 Installer is one class whose member definitions are spread over the areas:
#                 each area source includes installer.h, which declares the whole class and
#                 so includes the headers it needs from every area, and an area header never
#                 includes installer.h. The order therefore governs which headers a source
#                 names directly; what a member uses of another area's members it reaches
#                 through the class (engine start runs the wizard, the wizard starts the run).
#   linux         src/linux: foundation, package, the engine and itself.
#   programs      src/launcher, src/console, any other front end under src/, each tool under
#                 tools/, bench/ and fuzz/: every layer above, never each other.
#   tests         tests/<dir> includes what the code under src/<dir> may include (engine tests
#                 any area, tests/tools any tool), the test helpers of its own or a lower
#                 layer, and tests/support. tests/support and tests/support_selftest include
#                 only tests/support; nothing else includes test code.
set -uo pipefail

root=${1:-$(cd "$(dirname "$0")/.." && pwd)}
if [[ $# -gt 1 || ! -d $root ]]; then
    echo "usage: $0 [ROOT]" >&2
    exit 2
fi
cd "$root" || exit 2

# The layer of a path relative to the root, into `layer` as "rank name": a file may include
# files of lower rank and of its own layer. Programs share one rank and differ by name.
# "0 unknown:<why>" for a path that no layer covers.
layer_of()
{
    local path=$1 rest
    case $path in
    tests/data/*) layer="0 unknown:test data is no code" ;;
    tests/support/* | tests/support_selftest/*) layer="5 tests/support" ;;
    # Engine tests are grouped by behaviour, not by area.
    tests/installer/*/*) layer="25 engine" ;;
    tests/tools/*) layer="40 tools" ;;
    tests/*/*) layer_of "src/${path#tests/}" ;;
    src/foundation/strings/*) layer="1 foundation/strings" ;;
    src/foundation/streams/*) layer="2 foundation/streams" ;;
    src/foundation/xml/*) layer="3 foundation/xml" ;;
    src/foundation/misc/*) layer="4 foundation/misc" ;;
    src/foundation/*) layer="0 unknown:a part of src/foundation outside strings, streams, xml and misc" ;;
    src/package/*) layer="10 package" ;;
    src/installer/model/*) layer="20 engine/model" ;;
    src/installer/wizard/installer_ui.h | src/installer/wizard/exchange_enums.h) layer="21 engine/interface" ;;
    src/installer/transaction/*) layer="22 engine/transaction" ;;
    src/installer/uninstall/*) layer="23 engine/uninstall" ;;
    src/installer/wizard/*) layer="24 engine/wizard" ;;
    src/installer/*/*) layer="0 unknown:an engine area outside model, transaction, uninstall and wizard" ;;
    src/installer/*) layer="25 engine" ;;
    src/linux/*) layer="30 linux" ;;
    src/*/*)
        rest=${path#src/}
        layer="40 ${rest%%/*}"
        ;;
    tools/*/*)
        rest=${path#tools/}
        layer="40 tools/${rest%%/*}"
        ;;
    tools/*) layer="40 tools" ;;
    fuzz/*) layer="40 fuzz" ;;
    bench/*) layer="40 bench" ;;
    *) layer="0 unknown:outside the layered directories" ;;
    esac
}

# Why `from` may not include `to` (both "rank name"), into `why`; empty when it may. `file` is
# the including file, `target` the included one.
crossing()
{
    local file=$1 from=$2 to=$3 target=$4
    local from_rank=${from%% *} from_name=${from#* } to_rank=${to%% *} to_name=${to#* }
    why=""

    if [[ $to_name == tests/support ]]; then
        [[ $file == tests/* ]] || why="only tests include tests/support"
        return
    fi
    if [[ $from_name == tests/support ]]; then
        why="tests/support and its self-test include only tests/support"
        return
    fi
    if [[ $target == tests/* && $file != tests/* ]]; then
        why="only tests include test code"
        return
    fi
    [[ $from_name == "$to_name" ]] && return
    # A test of all tools may use the helpers of any tool.
    [[ $from_name == tools && $to_name == tools/* ]] && return
    if [[ $from_name == engine/* && $target == src/installer/installer.h ]]; then
        # Area sources define members of the one class; area headers sit below it.
        [[ $file == *.h ]] && why="an engine area header never includes installer.h, which includes the areas"
        return
    fi
    if [[ $from_name == engine/interface ]]; then
        ((to_rank < 10)) || why="the front-end interface (installer_ui.h, exchange_enums.h) includes foundation only"
        return
    fi
    ((to_rank < from_rank)) && return

    case $from_name in
    foundation/*)
        if [[ $to_name == foundation/* ]]; then
            why="foundation keeps the order strings < streams < xml < misc"
        else
            why="foundation includes nothing above it"
        fi
        ;;
    package) why="package builds on foundation only" ;;
    engine*)
        if [[ $to_name == engine* ]]; then
            why="engine areas go model < interface < transaction < uninstall < wizard < installer.h"
        else
            why="the engine includes no src/linux, program or front end"
        fi
        ;;
    linux) why="src/linux builds on foundation, package and the engine only" ;;
    *) why="programs never include each other" ;;
    esac
}

status=0
report()
{
    echo "$1" >&2
    status=1
}

dirs=()
for dir in src tools fuzz bench tests; do
    [[ -d $dir ]] && dirs+=("$dir")
done
[[ ${#dirs[@]} -gt 0 ]] || exit 0

while IFS= read -r match; do
    file=${match%%:*}
    rest=${match#*:}
    line=${rest%%:*}
    text=${rest#*:}
    [[ $file == tests/data/* ]] && continue
    include=${text#*\"}
    include=${include%%\"*}

    # Look the include up as the compiler does.
    target=""
    candidates=("${file%/*}/$include" "src/$include")
    [[ $file == tests/* ]] && candidates+=("tests/$include")
    [[ $file == tools/* ]] && candidates+=("tools/$include")
    for candidate in "${candidates[@]}"; do
        if [[ -f $candidate ]]; then
            target=$candidate
            break
        fi
    done
    [[ -n $target ]] || continue
    if [[ $target == *..* || $target == */./* ]]; then
        target=$(realpath -m --relative-to=. "$target")
    fi

    layer_of "$file"
    from=$layer
    layer_of "$target"
    to=$layer
    if [[ $from == "0 unknown:"* ]]; then
        report "$file:$line: no layer for this file (${from#0 unknown:}); give it one in scripts/check_layers.sh"
        continue
    fi
    if [[ $to == "0 unknown:"* ]]; then
        report "$file:$line: #include \"$include\" reaches $target, which has no layer (${to#0 unknown:})"
        continue
    fi
    crossing "$file" "$from" "$to" "$target"
    [[ -z $why ]] || report "$file:$line: #include \"$include\" crosses the layers: $why"
done < <(grep -rnE --include='*.h' --include='*.hpp' --include='*.c' --include='*.cc' --include='*.cpp' \
    '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "${dirs[@]}" | LC_ALL=C sort -t: -k1,1 -k2,2n)

exit $status
