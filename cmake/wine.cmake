# Makes Wine the way in which CMake and CTest run what they have built. All presets share one Wine prefix below
# build/, made on first use.
set(TAM_WINE_PREFIX "${PROJECT_SOURCE_DIR}/build/wine" CACHE PATH "Wine prefix that programs and tests run in")
set(CMAKE_CROSSCOMPILING_EMULATOR "${PROJECT_SOURCE_DIR}/scripts/wine.sh;--prefix;${TAM_WINE_PREFIX}")
