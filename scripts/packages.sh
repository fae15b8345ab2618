# The Debian 12 packages that this project needs, by purpose, and how to install those that are missing.
# Sourced by common.sh. shellcheck shell=bash

build_packages=(cmake ninja-build g++ libxerces-c-dev libcli11-dev nlohmann-json3-dev libexpat1-dev libcsv-dev)
# XQuery processors. A Java runtime from elsewhere is good enough for Saxon, so one is asked for only without any.
processor_packages=(libsaxonhe-java basex)
command -v java >/dev/null || processor_packages+=(default-jre-headless)
# Real documents, read where their packages put them.
document_packages=(unicode-cldr-core mobile-broadband-provider-info php-symfony-validator)
# What the page of `xdm show --html` is looked at with.
browser_packages=(chromium chromium-driver python3)
# What shows the manual page, completes the tool's command line and shares work out among workers.
shell_packages=(man-db zsh parallel)
test_packages=(libgtest-dev libgmock-dev libpugixml-dev pkg-config "${processor_packages[@]}" "${document_packages[@]}"
  "${browser_packages[@]}" "${shell_packages[@]}")
coverage_packages=(gcovr)
check_packages=(ccache clang clang-format clang-tidy libclang-rt-14-dev)
debian_packages=(dpkg-dev fakeroot lintian)
abi_packages=(abigail-tools)
reference_packages=(doxygen)
valgrind_packages=(valgrind)
benchmark_packages=(libbenchmark-dev libpugixml-dev libxml2-dev valgrind procps)

is_installed() {
  [[ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" == installed ]]
}

as_root() {
  if ((EUID == 0)); then "$@"; else sudo "$@"; fi
}

# install_packages PACKAGE...: installs those that are missing; asks apt-get for nothing when all are there.
install_packages() {
  local package missing=()
  for package in "$@"; do
    is_installed "$package" || missing+=("$package")
  done
  ((${#missing[@]})) || return 0
  echo "Installing ${missing[*]}" >&2
  as_root apt-get update -qq >&2
  as_root env DEBIAN_FRONTEND=noninteractive apt-get install -qq -y --no-install-recommends "${missing[@]}" >&2
}
