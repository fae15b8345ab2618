# What the scripts share. Sourced first thing by each; afterwards the current folder is the top of the repository.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
source scripts/packages.sh

# What was compiled in one checkout serves in every other.
export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1

# configure FOLDER OPTION...: makes or renews a build folder.
configure() {
  local folder=$1 launcher=()
  shift
  if command -v ccache >/dev/null; then launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache); fi
  cmake -S . -B "$folder" -G Ninja "${launcher[@]}" "$@"
}

# run_tests FOLDER ARGUMENT...: runs the tests of a build folder, as many at a time as there are processors.
run_tests() {
  local folder=$1
  shift
  ctest --test-dir "$folder" -j"$(nproc)" --output-on-failure --no-tests=error "$@"
}

# Builds what the packages are made of, in build-package/: optimised, for /usr, and with debug information that
# describes each class wherever it is used and names no folder of this machine. Arguments go to cmake --build.
build_for_packages() {
  configure build-package -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr \
    -DCMAKE_SKIP_INSTALL_RPATH=ON -DKVXDM_BUILD_TESTS=OFF \
    -DCMAKE_CXX_FLAGS="-femit-class-debug-always -ffile-prefix-map=$PWD/="
  cmake --build build-package "$@"
}

# Builds the benchmarks as what is measured is meant to be built, in build-bench/bench/.
build_benchmarks() {
  configure build-bench -DCMAKE_BUILD_TYPE=Release -DKVXDM_BUILD_TESTS=OFF -DKVXDM_BUILD_BENCHMARKS=ON
  cmake --build build-bench
}

# Every C++ file of ours.
source_files() {
  find base bench examples fuzz include src tests tools -name '*.h' -o -name '*.cpp' | sort
}
