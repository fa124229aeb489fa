#!/bin/bash
# Makes the Debian packages and installs them into a new root, which holds only
# the packages that they depend on or recommend, and runs the command there.
#
# dpkg itself judges whether the dependencies suffice: the new root's database
# has nothing else. The files are this machine's own, so that no network is
# needed.
#
#   debian.sh BUILD-FOLDER [FOLDER-FOR-THE-PACKAGES]
source "$(dirname "$0")/common.sh" "$1"
for tool in cpack dpkg-deb dpkg-shlibdeps chroot; do
  command -v "$tool" >/dev/null || skip "there is no $tool"
done
chroot / true 2>/dev/null || skip "changing the root needs rights"

debs=${2:-$scratch/debs}
cpack --config "$build/CPackConfig.cmake" -B "$debs" >"$scratch/log" 2>&1 ||
  fail "cpack: $(<"$scratch/log")"
field() { dpkg-deb -f "$debs/$1"_*.deb "$2"; }

[[ $(field libmorvunp0 Recommends) == *p7zip-full* ]] || fail "the 7-Zip engine is not recommended"
depends_on_rar=0
if [[ $(field libmorvunp0 Depends) == *libunrar* ]]; then depends_on_rar=1; fi
grep -q "MORVUNP_HAS_RAR $depends_on_rar\$" "$build/include/morvunp/buildoptions.h" ||
  fail "the RAR engine is a dependency: $depends_on_rar"

# The packages that satisfy a list of dependencies on this machine, with those
# that they depend on themselves.
declare -A closure=()
add_closure() {
  local alternative name
  while IFS= read -r alternative; do
    while IFS= read -r name; do
      [[ -v closure[$name] ]] && continue 2
      [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] || continue
      closure[$name]=1
      add_closure "$(dpkg-query -W -f '${Pre-Depends}, ${Depends}' "$name")"
      continue 2
    done < <(tr '|' '\n' <<<"$alternative" | sed -E 's/\(.*//; s/:any//; s/ //g; /^$/d')
  done < <(tr ',' '\n' <<<"$1")
}

# A root with the closure of these packages' dependencies; those of our own are
# left out. With "database" the files are left out too.
make_root() {
  local root=$scratch/$1 what=$2 package
  shift 2
  closure=()
  for package in "$@"; do
    add_closure "$(field "$package" Depends), $(field "$package" Recommends)"
  done
  mkdir -p "$root"/{tmp,var/lib/dpkg/{info,updates},usr/{bin,sbin,lib,lib64}}
  for package in bin sbin lib lib64; do ln -s "usr/$package" "$root/$package"; done
  # An installed copy of ours must not lend its files.
  unset 'closure[libmorvunp0]' 'closure[morvunp]'
  dpkg-query -s "${!closure[@]}" >"$root/var/lib/dpkg/status"
  [[ $what == database ]] && return
  dpkg-query -L "${!closure[@]}" | sort -u | while IFS= read -r path; do
    if [[ -f $path || -L $path ]] && [[ $path != /usr/share/doc/* ]]; then echo "$path"; fi
  done | tar -c --no-recursion -T - 2>/dev/null | tar -xh --keep-directory-symlink -C "$root"
}
install_into() {
  local root=$scratch/$1
  shift
  dpkg --root="$root" --force-not-root --no-triggers -i "$@" >"$scratch/log" 2>&1 ||
    fail "dpkg: $(<"$scratch/log")"
}

make_root root files libmorvunp0 morvunp
install_into root "$debs"/libmorvunp0_*.deb "$debs"/morvunp_*.deb
make_archives
mv "$scratch/archives" "$scratch/root/"
cp "$source/tests/fixtures/rar/tree.rar" "$scratch/root/archives/"
run() { chroot "$scratch/root" /usr/bin/morvunp "$@" || fail "morvunp $* in the new root"; }
for format in cab 7z iso; do
  run extract "/archives/test.$format" -C "/out/$format" -q
  [[ $(<"$scratch/root/out/$format/greeting") == hello ]] || fail "$format came out wrong"
done
if [[ $depends_on_rar == 1 ]]; then
  run extract /archives/tree.rar -C /out/rar -q
  [[ -s $scratch/root/out/rar/TOP.TXT ]] || fail "RAR: nothing came out"
fi

# The window's toolkit is large: its root has only the database.
others=("$debs"/libmorvunp-dev_*.deb)
names=(libmorvunp0)
if [[ -e $(echo "$debs"/morvunp-desktop_*.deb) ]]; then
  others+=("$debs"/morvunp-desktop_*.deb)
  names+=(morvunp-desktop)
fi
make_root others database "${names[@]}"
install_into others "$debs"/libmorvunp0_*.deb "${others[@]}"
