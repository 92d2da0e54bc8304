#!/bin/sh
# Renders the bundled example scene with TaviClient and the preview engine beside it, and names
# the images it wrote.
set -eu
build=${1:-build}
demo="$build/demo"
rm -rf "$demo"
mkdir -p "$demo"
cp "$build/bin/TaviClient" "$build/engines/preview/TaviTracerAVX.so" "$demo/"
status=0
"$demo/TaviClient" -scene "$build/example/example.tavi" -outputpath "$demo/output" || status=$?
echo "== images:"
for image in "$demo"/output/*; do
    [ -f "$image" ] && echo "   $image"
done
exit $status
