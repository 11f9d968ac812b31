#!/usr/bin/env bash
# Builds the Debian package from the finished build and checks what a fresh Debian 12 needs
# of it: every program and desktop file, the dependencies (each Qt Quick module the screens
# import, found by following the modules' own imports), and a polkit action that carries
# Morvanta's prompt for the helper where the package puts it.
#   tst_package.sh SOURCE_DIR BUILD_DIR VERSION
set -euo pipefail
src=$1 build=$2 version=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

cpack --config "$build/CPackConfig.cmake" -B "$work" >"$work/cpack.log" 2>&1 || { cat "$work/cpack.log"; fail "cpack"; }
deb=$work/morvanta_${version}_amd64.deb
[ -f "$deb" ] || fail "no $deb"

files=$(dpkg-deb -c "$deb" | awk '{print $6}')
for f in bin/morvanta libexec/morvanta/morvanta-hdiutil libexec/morvanta/morvanta-remove-original \
    libexec/morvanta/morvanta-panel \
    share/applications/morvanta.desktop share/icons/hicolor/scalable/apps/morvanta.svg \
    share/metainfo/org.morvanta.Morvanta.metainfo.xml share/man/man1/morvanta.1.gz \
    share/polkit-1/actions/org.morvanta.remove-original.policy \
    share/doc/morvanta/copyright share/doc/morvanta/changelog.gz; do
    grep -qx "./usr/$f" <<<"$files" || fail "missing /usr/$f"
done
! grep -E 'tst_|fastkdf|engine-driver|bench_|/local/' <<<"$files" || fail "test or misplaced files packaged"

[ "$(dpkg-deb -f "$deb" Package Version Architecture | tr '\n' ' ')" = "Package: morvanta Version: $version Architecture: amd64 " ] ||
    fail "control: $(dpkg-deb -f "$deb" Package Version Architecture)"
depends=$(dpkg-deb -f "$deb" Depends | tr -d ' ' | tr ',' '\n' | sed 's/(.*//')
# The Qt Quick modules the screens import, with the modules those import in turn.
qml=$(qmake6 -query QT_INSTALL_QML 2>/dev/null || echo /usr/lib/x86_64-linux-gnu/qt6/qml)
queue=($(grep -rhoE '^import Qt[A-Za-z.]+' --include='*.qml' "$src"/app "$src"/browser "$src"/lockscreens | awk '{print $2}'))
declare -A seen
while [ ${#queue[@]} -gt 0 ]; do
    module=${queue[0]}
    queue=("${queue[@]:1}")
    [ -z "${seen[$module]:-}" ] || continue
    seen[$module]=1
    qmldir=$qml/${module//.//}/qmldir
    [ -f "$qmldir" ] || continue # built into the Qml library
    queue+=($(awk '$1 == "import" || $1 == "depends" {print $2}' "$qmldir"))
    owner=$(dpkg -S "$qmldir" | cut -d: -f1)
    grep -qx "$owner" <<<"$depends" || fail "$module needs $owner, not in Depends"
done
for p in gocryptfs fuse3 p7zip-full pkexec adwaita-icon-theme libqt6quick6 libplist3; do
    grep -qx "$p" <<<"$depends" || fail "$p not in Depends"
done

dpkg-deb -x "$deb" "$work/root"
zcat "$work/root/usr/share/doc/morvanta/changelog.gz" | head -1 | grep -qF "morvanta ($version)" ||
    fail "the changelog has no entry for $version"
action=$work/root/usr/share/polkit-1/actions/org.morvanta.remove-original.policy
grep -qF '<message>Morvanta needs your permission to move this app into the vault.</message>' "$action" ||
    fail "polkit prompt"
grep -qF '"org.freedesktop.policykit.exec.path">/usr/libexec/morvanta/morvanta-remove-original<' "$action" ||
    fail "polkit action names another helper: $(grep exec.path "$action")"
appstreamcli validate --no-net "$work/root/usr/share/metainfo/org.morvanta.Morvanta.metainfo.xml" ||
    fail "metainfo"
echo "PASS: $(basename "$deb"), $(wc -l <<<"$files") entries"
