#!/usr/bin/env bash
# Installs the build into a fresh prefix and checks it as a desktop would use it: both
# programs, the starter definitions, a valid menu entry with its icons, and the rules file
# type known by name and by content and opened in the editor.
#   install_test.sh BUILD_DIR
set -euo pipefail
build=$1
prefix=$(mktemp -d /tmp/qvraci-install-XXXXXX)
trap 'rm -rf "$prefix"' EXIT
fail() { echo "install_test: $*" >&2; exit 1; }

cmake --install "$build" --prefix "$prefix" >/dev/null
for f in bin/qvraci-ruled bin/qvraci-rules share/qvraci/common.qrrs share/qvraci/common.txt \
         share/applications/qvraci-ruled.desktop share/mime/packages/qvraci-rules.xml \
         share/icons/hicolor/{48x48,128x128,256x256}/apps/qvraci-ruled.png; do
  [[ -s "$prefix/$f" ]] || fail "$f is missing"
done
desktop-file-validate "$prefix/share/applications/qvraci-ruled.desktop" ||
  fail "the desktop entry is not valid"
"$prefix/bin/qvraci-rules" check "$prefix/share/qvraci/common.qrrs" >/dev/null ||
  fail "the installed starter definitions do not check"

# The install updated the type database under the prefix; a file manager on GIO reads it.
export XDG_DATA_HOME="$prefix/share" PATH="$prefix/bin:$PATH"
cp "$prefix/share/qvraci/common.qrrs" "$prefix/renamed.bin" # known by its magic alone
for f in "$prefix/share/qvraci/common.qrrs" "$prefix/renamed.bin"; do
  type=$(gio info -a standard::content-type "$f" | sed -n 's/.*content-type: //p')
  [[ "$type" == application/x-qvraci-rules ]] || fail "$(basename "$f") is of type '$type'"
done
apps=$(gio mime application/x-qvraci-rules)
grep -q "Default application.*qvraci-ruled.desktop" <<<"$apps" ||
  fail "rules files do not open in the editor"
echo "install_test: ok"
