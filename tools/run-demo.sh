#!/bin/sh
# The user's path from a model to a picture: builds a scene from the demo's OBJ with tavi-build,
# shows what it holds with tavi-inspect, and renders it with TaviClient and the preview engine
# beside it; then renders the example that the scene writer makes in code. Names the images.
set -eu
build=${1:-build}
demo="$build/demo"
rm -rf "$demo"
mkdir -p "$demo"
cp "$build/bin/TaviClient" "$build/engines/preview/TaviTracerAVX.so" "$demo/"
echo "== tavi-build tools/demo/cornell_box.obj"
"$build/bin/tavi-build" --size 480 480 --passes 256 --view back --no-default-lights --formats jpg,exr \
    tools/demo/cornell_box.obj "$demo/cornell_box.tavi"
echo "== tavi-inspect $demo/cornell_box.tavi"
"$build/bin/tavi-inspect" "$demo/cornell_box.tavi"
status=0
"$demo/TaviClient" -scene "$demo/cornell_box.tavi" -outputpath "$demo/output" || status=$?
"$demo/TaviClient" -scene "$build/example/example.tavi" -outputpath "$demo/output" || status=$?
echo "== images:"
for image in "$demo"/output/*; do
    [ -f "$image" ] && echo "   $image"
done
exit $status
