# For scripts that build: source it, and what is compiled goes through ccache where that is installed.
if command -v ccache >/dev/null; then
  export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  # Clones in other folders share what was compiled; precompiled headers are known by what they were made from.
  export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1
  export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
fi
