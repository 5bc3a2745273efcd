# predsel_flags: what every target of the project compiles with.
#
# Contraction is off because a fused multiply-add changes the last bit of running means, and
# saved states are compared bit for bit; -ffast-math would let a NaN weight through `!(w > 0)`.
add_library(predsel_flags INTERFACE)
target_compile_features(predsel_flags INTERFACE cxx_std_20)
target_compile_options(predsel_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -ffp-contract=off)
# GCC 12's optimiser sees overlaps and uninitialised members in inlined std::string operations where
# there are none (GCC bug 105329); other compilers and the unoptimised builds keep both warnings.
target_compile_options(predsel_flags INTERFACE
  "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-maybe-uninitialized>")
target_include_directories(predsel_flags INTERFACE "${PROJECT_SOURCE_DIR}")
set(CMAKE_CXX_EXTENSIONS OFF)

if(PREDSEL_SANITIZE)
  # Everything in the process is instrumented alike, the test framework's headers included.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

find_program(PREDSEL_MOLD mold)
if(PREDSEL_MOLD)
  add_link_options(-fuse-ld=mold)
endif()
