# One place for the warning set, so the engine, the CLI, the GUI and the tests agree.
add_library(sysmend_warnings INTERFACE)
target_compile_options(sysmend_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
    -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough)
if(SYSMEND_WERROR)
    target_compile_options(sysmend_warnings INTERFACE -Werror)
endif()
