#!/usr/bin/env bash
# End-to-end install benchmark: a generated product is packed into a self-extracting Quilb
# installer and installed unattended, and the same payload is unpacked by a makeself archive
# and by tar in the same run, so that the ratios hold on a shared, noisy machine.
#
#   bench/install_bench.sh [--size MB] [--runs N] [--seed N] [--dir DIR] [--keep] [--no-build]
#
#   --size MB    payload size (default 200; about 25 files per MB, so 5,000 files for 200)
#   --runs N     timed runs of each contender; medians are printed (default 3)
#   --seed N     seed of the payload generator (default 1)
#   --dir DIR    where the scratch directory goes (default $TMPDIR or /tmp)
#   --keep       keep the scratch directory (payload, archives, trace, debug log)
#   --no-build   use build/bin as it is instead of bringing quilb_pack, launcher and
#                installer_console up to date first
#
# Needs root (the sandbox makes an overlay), perl, gzip, tar, strace, GNU time and makeself;
# the last three are installed with apt-get when missing, and the script says so. Programs
# come from the release build in build/ (configured RelWithDebInfo when it doesn't exist yet),
# never from the sanitizer build.
#
# The payload: text (prose, code and log lines from a seeded generator; compressible), chunks
# of the ELF programs in /usr/bin taken in name order (binaries; this part depends on the
# machine's /usr/bin, everything else only on the seed), and random bytes behind gzip and
# JPEG headers (already compressed), spread over a directory tree up to four levels deep.
# File names carry a running number, so that the aliases quilb_pack derives from the paths
# (the path with its slashes taken out) never collide.
#
# What is measured:
# - Wall time: each run of each contender is its own scripts/sandbox.sh call, and the clock
#   (date +%s%N) is read inside the sandbox right around the command, so that making the
#   sandbox is not counted; its cost (sandbox.sh -- true, timed from outside) is printed
#   apart. The order of the contenders rotates from run to run. `sync` runs before each
#   timed command, and the target directory is empty and lies in the scratch directory
#   (bound into the sandbox), so all three write to the same file system. The archives are
#   built once, untimed; like our launcher, the makeself archive checks its own checksum
#   before it unpacks.
# - Peak memory: "Maximum resident set size" of /usr/bin/time -v. The kernel folds the peak
#   of every reaped descendant into the rusage of the waited child, so this is the peak of
#   the largest single process in the tree: for our installer max(launcher, front end,
#   front-end probes), for makeself max(sh, tail, gzip, tar), for tar max(tar, gzip). The
#   launcher's own peak and the front end's are told apart in the traced run: a poller
#   reads VmHWM of both from /proc every 20 ms. The launcher lives on waiting for the front
#   end, so its value is exact; the front end's last reading can miss growth in its last
#   20 ms, so when the tree peak is above the launcher's own, the tree peak is the front
#   end's (the -testRun probes are tiny) and that is printed instead.
# - Where the time of our install goes: one extra run, not among the timed ones, under
#   `strace -f --seccomp-bpf -ttt -y` (microsecond stamps; file descriptors shown with their
#   paths; only the traced calls stop the program) with the
#   launcher's progress lines on (-quiet=0) and the front end's debug log on
#   (QUILB_INSTALLER_DEBUG=1). The debug log stamps its lines to the second only, so each
#   line is timed by the write() that puts it into the log file. The marks:
#     launcher check    launcher execve .. its "OK." after "Verifying installer integrity..."
#     launcher load     "OK." .. "Gathering file information..." (outer package read, inflated)
#     launcher unpack   .. the first front end started with -testRun
#     front-end probe   .. execve of the front end with -bin=
#     front-end load    .. debug line "Running installation"; of it the product package read
#                       and inflated: "Allocating memory for the compressed cabinet" .. "Finished
#                       file headers initialization."
#     template, defaults .. "Starting installation UI"
#     wizard            .. "Setting dialog "CopyProgress""
#     CopyProgress      .. the next "Setting dialog" line
#     rest              .. the front end's exit; launcher cleanup: .. the launcher's exit
#   and inside those, from the paths that the front end (any of its processes or threads)
#   opens for writing, writes or renames:
#     file loop         first .. last such call on a payload file under the target
#     log               files under [INSTALLDIR]/uninstall/ (action log, backup, uninstaller),
#                       and files renamed there in the end: from the last payload file to
#                       their last write or rename; their writes during the loop are counted
#   A phase whose marks are missing is printed as such, without a number. strace stops the
#   program at every traced call (write and open are among them, so the file loop pays most),
#   so beside each traced time the number of such calls is printed, and an estimate without
#   strace: the traced time less calls x (traced total - untraced median) / all calls.
#
# Exit status: 0 when every contender ran (a note is printed when our install left fewer
# files than the payload has); 1 when a contender failed; 2 for a setup failure.
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
size_mb=200
runs=3
seed=1
scratch_parent=${TMPDIR:-/tmp}
keep=0
build_programs=1

usage() { sed -n '5,15p' "$0" | sed 's/^# \{0,1\}//'; }
die() { echo "install_bench: $*" >&2; exit 2; }

while [ $# -gt 0 ]; do
    case "$1" in
        --size) size_mb=${2:?}; shift 2 ;;
        --runs) runs=${2:?}; shift 2 ;;
        --seed) seed=${2:?}; shift 2 ;;
        --dir) scratch_parent=${2:?}; shift 2 ;;
        --keep) keep=1; shift ;;
        --no-build) build_programs=0; shift ;;
        -h|--help) usage; exit 0 ;;
        *) usage >&2; exit 2 ;;
    esac
done
[[ $size_mb =~ ^[0-9]+$ && $size_mb -ge 1 ]] || die "--size wants a whole number of MB"
[[ $runs =~ ^[0-9]+$ && $runs -ge 1 ]] || die "--runs wants a whole number above 0"
[[ $seed =~ ^[0-9]+$ ]] || die "--seed wants a whole number"

# ---- Tools ----------------------------------------------------------------------------------
[ "$(id -u)" -eq 0 ] || die "needs root: every install runs in scripts/sandbox.sh, which makes an overlay"
missing=()
command -v makeself >/dev/null || missing+=(makeself)
[ -x /usr/bin/time ] || missing+=(time)
command -v strace >/dev/null || missing+=(strace)
if [ ${#missing[@]} -gt 0 ]; then
    echo "install_bench: installing ${missing[*]} with apt-get (missing here)"
    DEBIAN_FRONTEND=noninteractive apt-get install -y "${missing[@]}" >/dev/null \
        || die "apt-get install ${missing[*]} failed"
fi
for tool in perl gzip tar sync; do
    command -v "$tool" >/dev/null || die "$tool is not installed"
done
"$root/scripts/sandbox.sh" --check || die "no sandbox can be made here"

# ---- Programs -------------------------------------------------------------------------------
build=$root/build
if [ $build_programs = 1 ]; then
    if [ ! -f "$build/CMakeCache.txt" ]; then
        echo "install_bench: configuring $build (RelWithDebInfo)"
        cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
            -DQUILB_BUILD_TESTS=OFF >/dev/null || die "configuring $build failed"
    fi
    if ! cmake --build "$build" --target quilb_pack launcher installer_console -j2 >"${TMPDIR:-/tmp}/install_bench_build.$$" 2>&1; then
        tail -n 5 "${TMPDIR:-/tmp}/install_bench_build.$$" >&2
        echo "install_bench: building failed; going on with the programs already in $build/bin" >&2
    fi
    rm -f "${TMPDIR:-/tmp}/install_bench_build.$$"
fi
for program in quilb_pack launcher installer_console; do
    [ -x "$build/bin/$program" ] || die "$build/bin/$program is missing (cmake --build build --target $program -j2)"
done
build_type=$(sed -n 's/^CMAKE_BUILD_TYPE:[A-Z]*=//p' "$build/CMakeCache.txt")
if grep -q '^QUILB_SANITIZE:BOOL=ON' "$build/CMakeCache.txt" || grep -q -- '-fsanitize' "$build/CMakeCache.txt"; then
    die "$build is a sanitizer build; the benchmark wants the release build"
fi

# ---- Scratch directory ----------------------------------------------------------------------
mkdir -p "$scratch_parent"
work=$(mktemp -d "$(cd "$scratch_parent" && pwd)/quilb-install-bench.XXXXXX")
if [ $keep = 1 ]; then
    trap 'echo "Kept: $work"' EXIT
else
    trap 'rm -rf "$work"' EXIT
fi
mkdir -p "$work/product" "$work/target" "$work/results"

echo "== Quilb install benchmark: ${size_mb} MB, $runs run(s), seed $seed, build $build ($build_type)"

# ---- Payload and template -------------------------------------------------------------------
# Writes the payload under $work/payload, the template and the configuration, and prints one
# summary line: files dirs bytes text_bytes binary_bytes compressed_bytes elf_from_usr_bin.
generate() {
    perl - "$work" "$size_mb" "$seed" <<'PERL'
use strict;
use warnings;
my ($work, $size_mb, $seed) = @ARGV;
srand($seed);
my $payload = "$work/payload";
my $target_bytes = $size_mb * 1024 * 1024;
my $file_count = int($size_mb * 25);
$file_count = 20 if $file_count < 20;

sub log_uniform { my ($lo, $hi) = @_; return exp(log($lo) + rand() * (log($hi) - log($lo))); }
sub random_bytes {
    my ($n) = @_;
    my $words = int($n / 4) + 1;
    return substr(pack("L*", map { int(rand(4294967296)) } 1 .. $words), 0, $n);
}

# The directory tree: a few top-level areas, each level below picked at random, four at most.
my @areas = qw(bin lib share doc data plugins assets modules);
my @dirs = map { [$_, 1] } @areas;
my $dir_count = int($file_count / 25);
$dir_count = 8 if $dir_count < 8;
for my $i (scalar(@dirs) .. $dir_count - 1) {
    my $parent;
    do { $parent = $dirs[int(rand(@dirs))] } while ($parent->[1] >= 4);
    push @dirs, [sprintf("%s/%s%03d", $parent->[0], (qw(src res img part cfg sub))[int(rand(6))], $i),
                 $parent->[1] + 1];
}

# Kinds and sizes. Half the files are text, a quarter binaries, a quarter compressed; sizes
# are drawn log-uniform per kind, one file in 200 is made large, and each kind is scaled to
# its share of the asked size: text 40%, binaries 35%, compressed 25%.
my @files;
for my $i (1 .. $file_count) {
    my $r = rand();
    my ($kind, $ext, $lo, $hi);
    if ($r < 0.50) {
        $kind = 'text';
        $ext = (qw(txt c h xml log csv md))[int(rand(7))];
        ($lo, $hi) = (300, 200_000);
    } elsif ($r < 0.75) {
        $kind = 'binary';
        $ext = (qw(so bin o))[int(rand(3))];
        ($lo, $hi) = (4_000, 1_000_000);
    } else {
        $kind = 'compressed';
        $ext = (qw(gz jpg))[int(rand(2))];
        ($lo, $hi) = (2_000, 600_000);
    }
    my $size = log_uniform($lo, $hi);
    $size *= 10 if rand() < 0.005;
    my $dir = $dirs[int(rand(@dirs))][0];
    push @files, { path => sprintf("%s/f%05d.%s", $dir, $i, $ext), dir => $dir, kind => $kind,
                   ext => $ext, size => $size };
}
my %share = (text => 0.40, binary => 0.35, compressed => 0.25);
my %sum;
$sum{$_->{kind}} += $_->{size} for @files;
for my $file (@files) {
    $file->{size} = int($file->{size} * $share{$file->{kind}} * $target_bytes / $sum{$file->{kind}});
    $file->{size} = 1 if $file->{size} < 1;
}

# Text comes from pools of lines, picked at random per file.
my @syllables = qw(ka lo mi ne ra su ti vo be da fe gi ho ju pa qu ri se to wu xa ye zo an el in or um st tr);
my @vocabulary;
for (1 .. 3000) {
    my $word = '';
    $word .= $syllables[int(rand(@syllables))] for 1 .. 1 + int(rand(4));
    push @vocabulary, $word;
}
# Zipf-like: low indices far more often.
sub word { return $vocabulary[int(3000 * rand() ** 3)]; }
my (%pool);
for (1 .. 6000) {
    my $n = 5 + int(rand(12));
    my $line = join(' ', map { word() } 1 .. $n);
    push @{$pool{prose}}, ucfirst($line) . ".\n";
    my $indent = '    ' x int(rand(4));
    push @{$pool{code}}, sprintf("%s%s = %s(%s, %s, %d);\n", $indent, word(), word(), word(), word(), int(rand(1000)));
    my $tag = word();
    push @{$pool{markup}}, sprintf("%s<%s name=\"%s\" value=\"%s\">%s</%s>\n", $indent, $tag, word(), word(), word(), $tag);
}
my %flavour = (txt => 'prose', md => 'prose', c => 'code', h => 'code', xml => 'markup', log => 'log', csv => 'csv');
sub text_of {
    my ($ext, $size) = @_;
    my $flavour = $flavour{$ext};
    my $text = '';
    while (length($text) < $size) {
        if ($flavour eq 'log') {
            $text .= sprintf("2024-%02d-%02d %02d:%02d:%02d.%03d %s %s: %s\n", 1 + int(rand(12)), 1 + int(rand(28)),
                             int(rand(24)), int(rand(60)), int(rand(60)), int(rand(1000)),
                             (qw(INFO INFO INFO DEBUG WARN ERROR))[int(rand(6))], word(),
                             $pool{prose}[int(rand(6000))] =~ s/\n//r);
        } elsif ($flavour eq 'csv') {
            $text .= join(',', int(rand(100000)), word(), sprintf("%.3f", rand(1000)), word(), int(rand(10))) . "\n";
        } else {
            $text .= $pool{$flavour}[int(rand(6000))];
        }
    }
    return substr($text, 0, $size);
}

# Binaries: the ELF programs of /usr/bin in name order, read into one pool, which the files
# take from in turn. Without any, structured pseudo-random data stands in.
my $binary_need = 0;
$binary_need += $_->{size} for grep { $_->{kind} eq 'binary' } @files;
my $pool_cap = $binary_need < 96 * 1024 * 1024 ? $binary_need + 1024 : 96 * 1024 * 1024;
my $elf = '';
if (opendir(my $bin, '/usr/bin')) {
    for my $name (sort readdir($bin)) {
        last if length($elf) >= $pool_cap;
        my $path = "/usr/bin/$name";
        next if -l $path || !-f $path;
        open(my $in, '<:raw', $path) or next;
        my $head = '';
        read($in, $head, 4);
        if ($head eq "\x7fELF") {
            local $/;
            my $rest = <$in>;
            $elf .= $head . (defined $rest ? $rest : '');
        }
        close($in);
    }
    closedir($bin);
}
my $elf_from_usr_bin = length($elf) > 0;
if (!$elf_from_usr_bin) {
    while (length($elf) < $pool_cap) {
        $elf .= ("\0" x int(rand(512))) . random_bytes(int(rand(2048))) . text_of('c', int(rand(256)));
    }
}
my $elf_at = 0;
sub binary_of {
    my ($size) = @_;
    my $out = '';
    while (length($out) < $size) {
        $elf_at = 0 if $elf_at >= length($elf);
        my $take = substr($elf, $elf_at, $size - length($out));
        $elf_at += length($take);
        $out .= $take;
    }
    return $out;
}

sub compressed_of {
    my ($ext, $size) = @_;
    my $head = $ext eq 'gz' ? "\x1f\x8b\x08\x00\x00\x00\x00\x00\x02\x03"
                            : "\xff\xd8\xff\xe0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00";
    my $tail = $ext eq 'gz' ? '' : "\xff\xd9";
    my $body = $size - length($head) - length($tail);
    return substr($head . random_bytes($body > 0 ? $body : 0) . $tail, 0, $size);
}

my %bytes = (text => 0, binary => 0, compressed => 0);
my %made;
mkdir($payload) or die "can't make $payload: $!";
for my $file (@files) {
    my $dir = "$payload/$file->{dir}";
    if (!$made{$dir}++) {
        my $path = $payload;
        for my $part (split m{/}, $file->{dir}) {
            $path .= "/$part";
            mkdir($path) unless -d $path;
        }
    }
    my $data = $file->{kind} eq 'text'   ? text_of($file->{ext}, $file->{size})
             : $file->{kind} eq 'binary' ? binary_of($file->{size})
             :                             compressed_of($file->{ext}, $file->{size});
    open(my $out, '>:raw', "$payload/$file->{path}") or die "can't write $payload/$file->{path}: $!";
    print $out $data;
    close($out) or die "can't write $payload/$file->{path}: $!";
    $bytes{$file->{kind}} += length($data);
}

# The install template: one FileSet with an FN per file, each into its own directory below
# [INSTALLDIR], and the answers of the unattended run.
open(my $t, '>', "$work/product/install.xml") or die "can't write the template: $!";
print $t <<'XML';
<?xml version="1.0" encoding="UTF-8"?>
<QuilbGroupInstallation>
  <ProductDesc>
    <Fullname>Quilb Bench Payload</Fullname>
    <MajorVersion>1</MajorVersion>
    <MinorVersion>0</MinorVersion>
    <MinestVersion>0</MinestVersion>
    <Website>https://bench.quilb.example</Website>
    <Supportsite>https://bench.quilb.example/support</Supportsite>
    <Supportemail>support@quilb.example</Supportemail>
  </ProductDesc>

  <Dialogs>
    <CopyProgress Special="AutoNext">
      <Text x="20" y="20" w="-20" h="30">Installing the benchmark payload...</Text>
      <Progress x="20" y="60" w="-20" h="20"/>
    </CopyProgress>
    <Finish Special="Finish">
      <Text x="20" y="20" w="-20" h="30">The payload is installed in [INSTALLDIR].</Text>
    </Finish>
  </Dialogs>

  <Installation>
    <Uninstall>
      <InstallLogFile>[INSTALLDIR]/uninstall/bench.log</InstallLogFile>
      <InstallBackupFile>[INSTALLDIR]/uninstall/bench.bak</InstallBackupFile>
      <UninstallCmd>[INSTALLDIR]/uninstall/uninstaller_console</UninstallCmd>
      <UninstallXmlFile>[INSTALLDIR]/uninstall/install.xml</UninstallXmlFile>
    </Uninstall>

    <InstallerControlVariables>
      <PreviousInstallation>PREVIOUS_INSTALLATION</PreviousInstallation>
      <ShouldUninstall>SHOULD_UNINSTALL</ShouldUninstall>
      <CustomizeSettings>CUSTOMIZE</CustomizeSettings>
      <ProgressDetails>PROGRESS_DETAILS</ProgressDetails>
      <InstallError>INSTALL_ERROR</InstallError>
      <UninstallError>UNINSTALL_ERROR</UninstallError>
      <DlgCondition>DLG_CONDITION</DlgCondition>
    </InstallerControlVariables>

    <DefValues>
      <Value Name="INSTALLDIR" DataType="value">/opt/quilb-bench</Value>
      <Value Name="CUSTOMIZE" DataType="value">0</Value>
      <Value Name="PROGRESS_DETAILS" DataType="value">0</Value>
    </DefValues>

    <FileSet Name="Payload" Desc="The generated payload">
      <FN Dest="[INSTALLDIR]/uninstall">../product/install.xml</FN>
XML
for my $file (@files) {
    print $t "      <FN Dest=\"[INSTALLDIR]/$file->{dir}\">$file->{path}</FN>\n";
}
print $t "    </FileSet>\n  </Installation>\n</QuilbGroupInstallation>\n";
close($t) or die "can't write the template: $!";

open(my $c, '>', "$work/config.xml") or die "can't write the configuration: $!";
print $c "<DefValues>\n  <Value Name=\"INSTALLDIR\" DataType=\"value\">$work/target/ours</Value>\n</DefValues>\n";
close($c) or die "can't write the configuration: $!";

printf("%d %d %d %d %d %d %d\n", scalar(@files), scalar(keys %made), $bytes{text} + $bytes{binary} + $bytes{compressed},
       $bytes{text}, $bytes{binary}, $bytes{compressed}, $elf_from_usr_bin ? 1 : 0);
PERL
}

mb() { awk -v b="$1" 'BEGIN { printf "%.1f MB", b / 1048576 }'; }

start_ns=$(date +%s%N)
generate >"$work/payload.summary" || die "generating the payload failed"
read -r file_count dir_count payload_bytes text_bytes binary_bytes compressed_bytes elf_real <"$work/payload.summary"
echo "Payload: $file_count files in $dir_count directories, $(mb "$payload_bytes")" \
     "(text $(mb "$text_bytes"), binaries $(mb "$binary_bytes"), compressed $(mb "$compressed_bytes"))" \
     "made in $(( ($(date +%s%N) - start_ns) / 1000000 )) ms"
[ "$elf_real" = 1 ] || echo "  (no ELF programs in /usr/bin: binaries are structured pseudo-random data)"
duplicates=$(sed -n 's:.*<FN [^>]*>\(.*\)</FN>.*:\1:p' "$work/product/install.xml" | tr -d '/' | sort | uniq -d | wc -l)
[ "$duplicates" -eq 0 ] || die "$duplicates aliases collide in the generated template"

# ---- Archives (built once, not part of the timed runs) --------------------------------------
timed_ms() { local s; s=$(date +%s%N); "$@" >/dev/null || return 1; echo $(( ($(date +%s%N) - s) / 1000000 )); }

pack_ms=$(timed_ms "$build/bin/quilb_pack" package -t "$work/product/install.xml" -b "$work/payload" \
    -o "$work/payload.ibin" 2>"$work/pack.err") || { cat "$work/pack.err" >&2; die "quilb_pack package failed"; }
installer_ms=$(timed_ms "$build/bin/quilb_pack" installer -p "$work/payload.ibin" -o "$work/setup" \
    2>"$work/pack.err") || { cat "$work/pack.err" >&2; die "quilb_pack installer failed"; }
makeself_ms=$(timed_ms makeself --gzip --complevel 9 --nox11 --quiet "$work/payload" "$work/payload.run" \
    "Quilb bench payload" true 2>"$work/makeself.err" | tail -n 1) || { cat "$work/makeself.err" >&2; die "makeself failed"; }
tar_ms=$(timed_ms tar czf "$work/payload.tar.gz" -C "$work" payload | tail -n 1) || die "tar czf failed"
size_of() { stat -c %s "$1"; }
echo "Archives: quilb setup $(mb "$(size_of "$work/setup")") (product package $(mb "$(size_of "$work/payload.ibin")"));" \
     "makeself --gzip --complevel 9 $(mb "$(size_of "$work/payload.run")"); tar.gz $(mb "$(size_of "$work/payload.tar.gz")")"
echo "  built in: quilb_pack package ${pack_ms} ms + installer ${installer_ms} ms; makeself ${makeself_ms} ms; tar czf ${tar_ms} ms"

# ---- Timed runs -----------------------------------------------------------------------------
# measure.sh KIND RUN runs one contender once inside the sandbox and leaves in results/:
# KIND.RUN.line ("rc microseconds files_landed content"), KIND.RUN.time (time -v), KIND.RUN.out.
cat >"$work/measure.sh" <<'MEASURE'
#!/usr/bin/env bash
set -u
work=$(cd "$(dirname "$0")" && pwd)
kind=$1
run=$2
target=$work/target/$kind
result=$work/results/$kind.$run
rm -rf "$target"
mkdir -p "$target"
case $kind in
    ours) command=("$work/setup" "-configFile=$work/config.xml"); landed=$target ;;
    makeself) command=("$work/payload.run" --noexec --nox11 --quiet --target "$target"); landed=$target ;;
    tar) command=(tar xzf "$work/payload.tar.gz" -C "$target"); landed=$target/payload ;;
esac
sync
start=$(date +%s%N)
/usr/bin/time -v -o "$result.time" "${command[@]}" >"$result.out" 2>&1
rc=$?
end=$(date +%s%N)
files=0
[ -d "$landed" ] && files=$(find "$landed" -path "$target/uninstall" -prune -o -type f -print | wc -l)
content=-
if [ "$run" = 1 ] && [ "$files" -gt 0 ]; then
    # Compared once: every payload file present with the same bytes.
    if diff -rq -x uninstall "$work/payload" "$landed" >"$result.diff" 2>&1; then
        content=same
    else
        content=differs
    fi
fi
echo "$rc $(( (end - start) / 1000 )) $files $content" >"$result.line"
rm -rf "$target"
MEASURE
chmod +x "$work/measure.sh"

kinds=(ours makeself tar)
sandbox_us=()
echo
echo "== $runs timed run(s) of each, one sandbox per run"
for run in $(seq 1 "$runs"); do
    # Rotate the order, so that no contender always follows the same one.
    shift_by=$(( (run - 1) % 3 ))
    order=("${kinds[@]:shift_by}" "${kinds[@]:0:shift_by}")
    for kind in "${order[@]}"; do
        "$root/scripts/sandbox.sh" -b "$work" -w "$work" -- "$work/measure.sh" "$kind" "$run" \
            || die "the sandbox failed for $kind (run $run)"
        read -r rc us files content <"$work/results/$kind.$run.line"
        printf '  run %d  %-9s %8.3f s  exit %s  files %s%s\n' "$run" "$kind" \
            "$(awk -v u="$us" 'BEGIN { print u / 1e6 }')" "$rc" "$files" \
            "$([ "$content" = - ] || echo ", content $content")"
    done
    s=$(date +%s%N)
    "$root/scripts/sandbox.sh" -b "$work" -w "$work" -- true
    sandbox_us+=($(( ($(date +%s%N) - s) / 1000 )))
done

# ---- Traced run -----------------------------------------------------------------------------
cat >"$work/trace.sh" <<'TRACE'
#!/usr/bin/env bash
set -u
work=$(cd "$(dirname "$0")" && pwd)
target=$work/target/ours
rm -rf "$target"
mkdir -p "$target"
export QUILB_INSTALLER_DEBUG=1
sync
strace -f --seccomp-bpf -ttt -y -s 256 -o "$work/trace.txt" \
    -e trace=execve,open,openat,creat,rename,renameat,renameat2,write,exit_group \
    "$work/setup" "-configFile=$work/config.xml" -quiet=0 >"$work/trace.out" 2>&1 &
tracer=$!
# The poller uses shell builtins only, so that it keeps up on a busy machine.
launcher=
frontend=
launcher_hwm=0
frontend_hwm=0
hwm() {
    local key value rest
    REPLY=0
    while read -r key value rest; do
        [ "$key" = VmHWM: ] && { REPLY=$value; return; }
    done 2>/dev/null <"/proc/$1/status"
}
while kill -0 "$tracer" 2>/dev/null; do
    if [ -z "$launcher" ]; then
        read -r launcher _ 2>/dev/null <"/proc/$tracer/task/$tracer/children" || true
    fi
    if [ -n "$launcher" ]; then
        hwm "$launcher"
        [ "$REPLY" -gt "$launcher_hwm" ] && launcher_hwm=$REPLY
        if [ -z "$frontend" ]; then
            children=()
            read -r -a children 2>/dev/null <"/proc/$launcher/task/$launcher/children" || true
            for child in "${children[@]}"; do
                arguments=()
                mapfile -d '' arguments 2>/dev/null <"/proc/$child/cmdline" || true
                for argument in "${arguments[@]}"; do
                    [[ $argument == -bin=* ]] && frontend=$child
                done
            done
        fi
    fi
    if [ -n "$frontend" ]; then
        hwm "$frontend"
        [ "$REPLY" -gt "$frontend_hwm" ] && frontend_hwm=$REPLY
    fi
    sleep 0.02
done
wait "$tracer"
echo "$? $launcher_hwm $frontend_hwm $(find "$target" -path "$target/uninstall" -prune -o -type f -print | wc -l)" \
    >"$work/results/trace.line"
find "$target/uninstall" -type f 2>/dev/null | sort >"$work/results/trace.uninstall" || true
cp /tmp/installer_debug*.log "$work/" 2>/dev/null || true
rm -rf "$target"
TRACE
chmod +x "$work/trace.sh"
echo
echo "== One traced run for the phases (strace -f --seccomp-bpf -ttt -y, debug log on)"
"$root/scripts/sandbox.sh" -b "$work" -w "$work" -- "$work/trace.sh" || die "the sandbox failed for the traced run"
read -r trace_rc launcher_hwm frontend_hwm trace_files <"$work/results/trace.line"

# ---- Report ---------------------------------------------------------------------------------
median() { printf '%s\n' "$@" | sort -n | awk '{ v[NR] = $1 } END { if (NR % 2) print v[(NR + 1) / 2]; else print (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }
peak_kb() { sed -n 's/.*Maximum resident set size (kbytes): *//p' "$1"; }

declare -A med_s med_us med_kb
status=0
for kind in "${kinds[@]}"; do
    times=()
    peaks=()
    for run in $(seq 1 "$runs"); do
        read -r rc us files content <"$work/results/$kind.$run.line"
        times+=("$us")
        peaks+=("$(peak_kb "$work/results/$kind.$run.time")")
        if [ "$rc" != 0 ]; then
            status=1
            echo "!! $kind exited with $rc in run $run; its output:" >&2
            tail -n 5 "$work/results/$kind.$run.out" >&2
        fi
    done
    med_us[$kind]=$(median "${times[@]}")
    med_s[$kind]=$(awk -v u="${med_us[$kind]}" 'BEGIN { printf "%.3f", u / 1e6 }')
    med_kb[$kind]=$(median "${peaks[@]}")
done
ratio() { awk -v a="$1" -v b="$2" 'BEGIN { if (b > 0) printf "%.2f", a / b; else print "n/a" }'; }
kb_mb() { awk -v k="$1" 'BEGIN { printf "%.1f MB", k / 1024 }'; }

read -r _ _ ours_files ours_content <"$work/results/ours.1.line"
read -r _ _ makeself_files makeself_content <"$work/results/makeself.1.line"
read -r _ _ tar_files tar_content <"$work/results/tar.1.line"

echo
echo "== Results: medians of $runs run(s); payload $file_count files, $(mb "$payload_bytes")"
row() { printf '  %-44s %9s %10s %10s\n' "$@"; }
row "contender" "wall" "peak RSS" "archive"
row "quilb setup -configFile (launcher, console)" "${med_s[ours]} s" "$(kb_mb "${med_kb[ours]}")" \
    "$(mb "$(size_of "$work/setup")")"
row "makeself --noexec --nox11 --quiet" "${med_s[makeself]} s" "$(kb_mb "${med_kb[makeself]}")" \
    "$(mb "$(size_of "$work/payload.run")")"
row "tar xzf" "${med_s[tar]} s" "$(kb_mb "${med_kb[tar]}")" "$(mb "$(size_of "$work/payload.tar.gz")")"
echo "  (peak RSS: the largest single process of each tree, from /usr/bin/time -v)"
echo "  time:   quilb/makeself $(ratio "${med_s[ours]}" "${med_s[makeself]}"),  tar/makeself $(ratio "${med_s[tar]}" "${med_s[makeself]}")"
echo "  memory: quilb/makeself $(ratio "${med_kb[ours]}" "${med_kb[makeself]}"),  tar/makeself $(ratio "${med_kb[tar]}" "${med_kb[makeself]}")"
echo "  size:   quilb/makeself $(ratio "$(size_of "$work/setup")" "$(size_of "$work/payload.run")"),  tar/makeself $(ratio "$(size_of "$work/payload.tar.gz")" "$(size_of "$work/payload.run")")"
if [ "$launcher_hwm" -gt 0 ]; then
    launcher_text="$(kb_mb "$launcher_hwm") (VmHWM while it waits for the front end)"
else
    launcher_text="not seen"
fi
if [ "$launcher_hwm" -gt 0 ] && [ "${med_kb[ours]}" -gt "$launcher_hwm" ]; then
    frontend_text="$(kb_mb "${med_kb[ours]}") (the tree peak, which is above the launcher's own)"
elif [ "$frontend_hwm" -gt 0 ]; then
    frontend_text="$(kb_mb "$frontend_hwm") (its last VmHWM seen, which may miss its final 20 ms)"
else
    frontend_text="not seen (it ran for less than one polling interval, or never)"
fi
echo "  quilb peak by process (traced run): launcher $launcher_text, front end $frontend_text"
echo "  sandbox.sh -- true takes $(awk -v u="$(median "${sandbox_us[@]}")" 'BEGIN { printf "%.3f", u / 1e6 }') s (median); timed from inside, so not in the times above"
echo "  files landed (run 1): quilb $ours_files, makeself $makeself_files, tar $tar_files of $file_count;" \
     "content: quilb $ours_content, makeself $makeself_content, tar $tar_content"
if [ "$makeself_files" -ne "$file_count" ] || [ "$tar_files" -ne "$file_count" ] \
    || [ "$makeself_content" != same ] || [ "$tar_content" != same ]; then
    echo "!! a baseline did not unpack the whole payload; its numbers are not comparable" >&2
    status=1
fi
if [ "$ours_files" -ne "$file_count" ]; then
    echo
    echo "NOTE: our install left $ours_files of $file_count payload files in the target directory."
    echo "      Either this build's CopyProgress stage copies no files yet, or the copy failed (its"
    echo "      output is kept in results/ours.*.out with --keep). Its time above is NOT the time of"
    echo "      a real install, and the ratios against makeself say nothing about copying."
elif [ "$ours_content" != same ]; then
    echo
    echo "NOTE: all $file_count files landed, but their content differs from the payload (results/ours.1.diff)."
    status=1
fi

# Phases of the traced run, from strace's microsecond stamps.
echo
echo "== Where the time of our install goes (the traced run)"
perl - "$work/trace.txt" "$work/target/ours" "${med_us[ours]}" <<'PERL' || echo "  (the trace could not be read)"
use strict;
use warnings;
my ($trace, $target, $untraced_us) = @ARGV;
my $uninstall = "$target/uninstall/";

# First pass: the events, and the files that are renamed into [INSTALLDIR]/uninstall/ at the
# end (an action log written elsewhere first belongs to the log all along).
open(my $in, '<', $trace) or die "can't read $trace: $!";
my (@events, %log_source);
while (my $line = <$in>) {
    my ($pid, $t, $rest) = $line =~ /^(\d+)\s+(\d+\.\d+)\s+(.*)$/ or next;
    push @events, [$pid, $t, $rest];
    if ($rest =~ /^rename/) {
        my @names = $rest =~ /"([^"]*)"/g;
        $log_source{$names[0]} = 1 if @names == 2 && index($names[1], $uninstall) == 0;
    }
}
close($in);
die "the trace is empty\n" unless @events;

my $launcher = $events[0][0];
my ($frontend, $first_probe, $frontend_exit, $launcher_exit, $last_debug_line);
my (%mark, $copy_dialog, $after_copy_dialog);
my ($loop_first, $loop_last, $log_first, $log_last, @log_times, @call_times);
sub first { my ($name, $t) = @_; $mark{$name} //= $t; }
first('start', $events[0][1]);
for my $event (@events) {
    my ($pid, $t, $rest) = @$event;
    if ($rest =~ /^\+\+\+ exited/ || $rest =~ /^\+\+\+ killed/) {
        $frontend_exit = $t if defined $frontend && $pid == $frontend;
        $launcher_exit = $t if $pid == $launcher;
        next;
    }
    next if $rest =~ /^---/;
    push @call_times, $t;
    if ($rest =~ /^execve\(/) {
        if ($rest =~ /"-testRun"/) { $first_probe //= $t; }
        elsif ($rest =~ /"-bin=/ && !defined $frontend) { $frontend = $pid; first('frontend start', $t); }
        next;
    }
    if ($pid == $launcher) {
        if ($rest =~ /^write\(1</) {
            first('ok', $t) if $rest =~ /"OK\./;
            first('gathering', $t) if $rest =~ /"Gathering file information/;
        }
        next;
    }
    # After the hand-over, every other process or thread is the front end's.
    next unless defined $frontend;
    if ($rest =~ /^write\(\d+<[^>]*installer_debug[^>]*>, "(.*)"/) {
        my $text = $1;
        next if $text =~ /^\s*\d+:\s/ || $text =~ /^\\r\\n$/;   # line number and stamp, line end
        $last_debug_line = $t;
        first('running', $t) if $text =~ /^Running installation/;
        first('cabinet', $t) if $text =~ /^Allocating memory for the compressed cabinet/;
        first('headers', $t) if $text =~ /^Finished file headers initialization/;
        first('ui', $t) if $text =~ /^Starting installation UI/;
        first('ui end', $t) if $text =~ /^Ending installation UI/;
        if ($text =~ /^Setting dialog \\"([^\\]*)\\"/) {
            if ($1 eq 'CopyProgress') { $copy_dialog //= $t; }
            elsif (defined $copy_dialog) { $after_copy_dialog //= $t; }
        }
        next;
    }
    # The paths that this call writes, opens for writing or renames; failed calls don't count.
    my @paths;
    if ($rest =~ /^(?:open|openat|creat)\(/) {
        next unless $rest =~ /O_WRONLY|O_RDWR|O_CREAT|^creat/;
        push @paths, $1 if $rest =~ /= \d+<([^>]*)>/;
    } elsif ($rest =~ /^write\(\d+<([^>]*)>/) {
        push @paths, $1;
    } elsif ($rest =~ /^rename/ && $rest =~ /= 0$/) {
        push @paths, $rest =~ /"([^"]*)"/g;
    }
    for my $path (@paths) {
        if (index($path, $uninstall) == 0 || $log_source{$path}) {
            $log_first //= $t;
            $log_last = $t;
            push @log_times, $t;
        } elsif (index($path, "$target/") == 0) {
            $loop_first //= $t;
            $loop_last = $t;
        }
    }
}

my $total = defined $launcher_exit ? $launcher_exit - $mark{start} : undef;
# strace's own cost, spread evenly over the traced calls: the traced total less the untraced
# median, per call. Only an estimate, and only when the traced run was the slower one.
my $per_call = defined $total && @call_times ? ($total - $untraced_us / 1e6) / @call_times : 0;
$per_call = 0 if $per_call < 0;
sub calls_between { my ($from, $to) = @_; return scalar(grep { $_ >= $from && $_ <= $to } @call_times); }

my (@rows, @inside);
sub span {
    my ($rows, $name, $from, $to, $missing, $note) = @_;
    if (defined $from && defined $to && $to >= $from) {
        push @$rows, [$name, $to - $from, calls_between($from, $to), $note];
    } else {
        push @$rows, [$name, undef, 0, $missing];
    }
}
span(\@rows, 'launcher check (start .. "OK.")', $mark{start}, $mark{ok}, 'no "OK." from the launcher');
span(\@rows, 'launcher load (outer package read and inflated)', $mark{ok}, $mark{gathering},
     'no "Gathering file information..."');
span(\@rows, 'launcher unpack (file list, front ends, product package)', $mark{gathering},
     $first_probe // $mark{'frontend start'}, 'no front end was started');
span(\@rows, 'front-end probe (-testRun)', $first_probe, $mark{'frontend start'}, 'no -testRun probe');
span(\@rows, 'front-end load (start .. "Running installation")', $mark{'frontend start'}, $mark{running},
     'no "Running installation" in the debug log');
span(\@rows, '  of it: product package read and inflated', $mark{cabinet}, $mark{headers},
     'no cabinet lines in the debug log');
span(\@rows, 'template, variables, defaults (.. "Starting installation UI")', $mark{running}, $mark{ui},
     'no "Starting installation UI"');
span(\@rows, 'wizard up to the CopyProgress dialog', $mark{ui}, $copy_dialog, 'no CopyProgress dialog was set');
my $copy_end = $after_copy_dialog // $mark{'ui end'};
span(\@rows, 'CopyProgress stage (.. the next dialog)', $copy_dialog, $copy_end, 'no CopyProgress dialog was set');
span(\@rows, 'rest of the wizard, front-end exit', $copy_end // $last_debug_line, $frontend_exit,
     'front-end exit not seen');
span(\@rows, 'launcher cleanup (.. its exit)', $frontend_exit, $launcher_exit, 'launcher exit not seen');

if (defined $loop_first) {
    span(\@inside, 'file loop (first .. last payload file written)', $loop_first, $loop_last);
} else {
    push @inside, ['file loop', undef, 0, 'no payload file was written under the target'];
}
if (defined $log_last) {
    my $in_loop = defined $loop_first ? grep { $_ >= $loop_first && $_ <= $loop_last } @log_times : 0;
    my ($from, $to) = defined $loop_last ? ($loop_last, $log_last > $loop_last ? $log_last : $loop_last)
                                         : ($log_first, $log_last);
    span(\@inside, 'log (after the last payload file)', $from, $to, '',
         "$in_loop log writes during the loop");
} else {
    push @inside, ['log', undef, 0, 'nothing was written to [INSTALLDIR]/uninstall/ or renamed there'];
}

my $format = "  %-62s %8s %6s %7s %9s  %s\n";
printf($format, 'phase', 'traced', 'share', 'calls', 'untraced~', '');
sub show {
    my ($row) = @_;
    my ($name, $s, $calls, $note) = @$row;
    if (!defined $s) {
        printf($format, $name, 'n/a', '', '', '', "($note)");
        return;
    }
    my $estimate = $s - $calls * $per_call;
    printf($format, $name, sprintf('%.3f s', $s), $total ? sprintf('%.1f%%', 100 * $s / $total) : '', $calls,
           $per_call > 0 ? sprintf('%.3f s', $estimate > 0 ? $estimate : 0) : '-', defined $note ? "($note)" : '');
}
show($_) for @rows;
printf($format, 'total', sprintf('%.3f s', $total), '', scalar(@call_times), sprintf('%.3f s', $untraced_us / 1e6),
       '(untraced: the median of the timed runs)')
    if defined $total;
print "  inside those:\n";
show($_) for @inside;
print "  calls: system calls strace stopped the program for. untraced~: the traced time less strace's cost,\n",
      "  taken as the same for every traced call (the traced total less the untraced median, per call).\n";
PERL
echo "  traced run: exit $trace_rc, $trace_files payload files landed"

exit $status
