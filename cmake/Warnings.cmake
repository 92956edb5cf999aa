# The warnings that the project's own code is held to.
add_library(qx_warnings INTERFACE)
target_compile_options(qx_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual
  # g++ 12 reports it falsely for `"text" + std::string`.
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(QX_WARNINGS_AS_ERRORS)
  target_compile_options(qx_warnings INTERFACE -Werror)
endif()
