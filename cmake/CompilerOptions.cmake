# Flags that every target is built with.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion
                    -Wno-missing-field-initializers
                    "$<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Wold-style-cast;-Woverloaded-virtual>")
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    add_compile_options(-Wno-restrict)  # GCC 12 finds overlaps in std::string where there are none
endif()
if(ATDP_WARNINGS_AS_ERRORS)
    add_compile_options(-Werror)
endif()

# The time arithmetic is defined operation by operation: no fused multiply-add.
add_compile_options(-ffp-contract=off)

if(ATDP_SANITIZE)
    add_compile_options(-fsanitize=${ATDP_SANITIZE} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)  # of the standard library's own checks
    add_link_options(-fsanitize=${ATDP_SANITIZE})
endif()
