#!/usr/bin/env bash
# Tries every way to install on a system that has nothing: what README.md says of the source, the package that comes
# of it, and the commands of Containerfile and of the conda recipe.
#   scripts/bare_system.sh           Debian 12
#   scripts/bare_system.sh SUITE     another release of Debian or Ubuntu, such as noble
# Needs root, debootstrap, a network and 3 GB in build/bare. Of conda only the recipe's own commands are run.
set -euo pipefail
cd "$(dirname "$0")/.."
. scripts/setup.sh
need_tools "debootstrap debootstrap"
suite=${1:-bookworm}
case $suite in
  bookworm | trixie | forky | sid) place=(http://deb.debian.org/debian) parts=main ;;
  *) place=(http://archive.ubuntu.com/ubuntu gutsy) parts=main,universe ;; # gutsy: how to unpack any of Ubuntu's
esac
base=$PWD/build/bare/$suite.tar
root=$PWD/build/bare/$suite
trap 'rm -rf --one-file-system "$root"' EXIT

# A bare system, and in /source what is committed here.
fresh() {
  echo "== $suite: $1"
  rm -rf --one-file-system "$root"
  mkdir -p "$root"
  if [ ! -f "$base" ]; then
    debootstrap --variant=minbase --components=$parts "$suite" "$root" "${place[@]}" >"$base.log"
    tar -C "$root" -cf "$base.part" .
    mv "$base.part" "$base"
  else
    tar -C "$root" -xf "$base"
  fi
  printf 'path-exclude=/usr/share/locale/*\nforce-unsafe-io\n' >"$root/etc/dpkg/dpkg.cfg.d/bare"
  mkdir "$root/source" "$root/data"
  git archive HEAD | tar -C "$root/source" -xf -
  cp examples/*.fasta "$root/data"
}

# inside FOLDER COMMANDS: in that system, as a shell does that is no login shell; mounts end with it.
inside() {
  unshare --mount env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
    DEBIAN_FRONTEND=noninteractive bash -ec '
      mount --rbind /dev "$1/dev"
      mount -t proc proc "$1/proc"
      cp /etc/resolv.conf "$1/etc/resolv.conf"
      exec chroot "$1" bash -ec "sudo() { \"\$@\"; }; cd $2; $3"' - "$root" "$1" "$2"
}
found="head -n 1 engb.results/hits.tsv | grep ENGB_THEP1"

fresh "from source, as README.md says"
inside / "apt-get update -qq"
commands=$(sed -n '/^## Installation/,$ s/^    //p' README.md | sed '/^cmake --install/q')
inside / "git() { cp -r /source zelvan; }; $commands
cd /data; time ~/zelvan/bin/zelvan-easy search engb.fasta uniprot_sample.fasta; $found"

mapfile -t runs < <(sed ':join; /\\$/ {N; s/\\\n *//; b join}' Containerfile | sed -n 's/^RUN //p')
fresh "Containerfile, the stage that builds"
mv "$root/source" "$root/zelvan"
inside /zelvan "${runs[0]}; ${runs[1]}; apt-get install -y -qq --no-install-recommends lintian >/dev/null
lintian --fail-on warning build/install/zelvan_*.deb"
package=$PWD/build/bare/$(cd "$root/zelvan/build/install" && echo zelvan_*.deb)
cp "$root"/zelvan/build/install/zelvan_*.deb "$package"

fresh "Containerfile, the stage that searches"
cp "$package" "$root/tmp"
inside /data "${runs[2]}; zelvan-easy search engb.fasta uniprot_sample.fasta; $found"

fresh "the package, as README.md says"
cp "$package" "$root/data"
inside /data "apt-get update -qq; apt-get install -y ./zelvan_*.deb; zelvan-easy search engb.fasta uniprot_sample.fasta; $found
zelvan -s engb.fasta -d uniprot_sample.fasta -niter 1 | zelvan2msa | head -n 1; man -w zelvan2tsv zelvan_manual"

fresh "the recipe for conda, with the system's compiler and libraries"
recipe=packaging/conda/meta.yaml
tests=$(sed -n '/^  commands:/,/^$/ s/^    - //p' $recipe | sed "s/{{ version }}/$(sed -n 's/^VERSION = "\(.*\)"/\1/p' easy/zelvan_easy/__init__.py)/")
inside /source "apt-get update -qq
apt-get install -y -qq --no-install-recommends g++ cmake ninja-build pandoc python3-{click,dnaio,jinja2,markupsafe,rich,typer,zstandard} tantan
export PREFIX=/opt/env PATH=/opt/env/bin:\$PATH; mkdir -p /opt/env/bin; ln -s /usr/bin/python3 /opt/env/bin/python3
packaging/conda/build.sh; cp -r examples /tmp; cd /tmp
$tests"
echo "all ways lead to a search"
