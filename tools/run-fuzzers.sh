#!/bin/sh
# Runs each fuzzer of a fuzz build (make fuzz) for a while, with its seeds and dictionary:
#   tools/run-fuzzers.sh <build folder> <seconds per target> <corpus folder> [targets at once]
# New inputs are kept in <corpus folder>/<target>/, what breaks a target in
# <build folder>/artifacts/<target>/. A single allocation or a resident size beyond 512 MiB and
# an input that takes more than 5 seconds count as failures, so that amplification is found too.
# Exits 1 when any target failed, after printing the end of its log.
set -eu
build=$1
seconds=$2
corpus=$3
parallel=${4:-1}
targets="scene_load preview_scene material_document texmap_document camera_document settings_document spectrum_table"
logs="$build/fuzz-logs"
mkdir -p "$logs"

run_one() {
    target=$1
    # A scene of several packed records outgrows the seeds, which libFuzzer would take as the limit.
    longest=""
    case "$target" in scene_load | preview_scene) longest=-max_len=65536 ;; esac
    mkdir -p "$corpus/$target" "$build/artifacts/$target"
    "$build/bin/fuzz_$target" -max_total_time="$seconds" -rss_limit_mb=512 -timeout=5 -close_fd_mask=1 \
        -print_final_stats=1 -dict="$build/fuzz/dict/$target.dict" $longest \
        -artifact_prefix="$build/artifacts/$target/" \
        "$corpus/$target" "$build/fuzz/seeds/$target" >"$logs/$target.log" 2>&1
}

failed=""
running=0
pids=""
for target in $targets; do
    run_one "$target" &
    pids="$pids $!:$target"
    running=$((running + 1))
    if [ "$running" -ge "$parallel" ]; then
        for entry in $pids; do
            wait "${entry%%:*}" || failed="$failed ${entry#*:}"
        done
        pids=""
        running=0
    fi
done
for entry in $pids; do
    wait "${entry%%:*}" || failed="$failed ${entry#*:}"
done

for target in $targets; do
    log="$logs/$target.log"
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    last=$(grep -E '^#[0-9]+' "$log" | tail -n 1 | grep -oE 'cov: [0-9]+ ft: [0-9]+ corp: [^ ]+' || true)
    echo "fuzz $target: ${runs:-?} runs, ${speed:-?}/s, ${last:-no coverage line}"
done
for target in $failed; do
    echo "== fuzz $target failed; the end of $logs/$target.log:"
    tail -n 60 "$logs/$target.log"
done
[ -z "$failed" ]
