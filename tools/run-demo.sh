#!/bin/sh
# Runs TaviClient on the bundled example scene beside the best engine module that was built.
set -eu
build=${1:-build}
demo="$build/demo"
rm -rf "$demo"
mkdir -p "$demo"
cp "$build/bin/TaviClient" "$demo/"
if [ -f "$build/engines/preview/TaviTracerAVX.so" ]; then
    cp "$build/engines/preview/TaviTracerAVX.so" "$demo/"
else
    # The recording engine renders nothing; its script makes it report progress so the bar shows.
    cp "$build/engines/recording/TaviTracerAVX.so" "$demo/"
    cp tools/demo/recording.script "$demo/"
fi
status=0
"$demo/TaviClient" -scene "$build/example/example.tavi" -outputpath "$demo/output" || status=$?
if [ -f "$demo/recording.log" ]; then
    echo "== calls the engine received ($demo/recording.log):"
    cut -c1-160 "$demo/recording.log"
fi
exit $status
