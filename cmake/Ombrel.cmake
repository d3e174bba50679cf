# Compiler settings, and the three kinds of targets that the tree is made of.

find_program(OMBREL_CCACHE ccache)
if(OMBREL_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${OMBREL_CCACHE})
endif()
find_program(OMBREL_MOLD mold)
if(OMBREL_MOLD)
  add_link_options(-fuse-ld=mold)
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion)
if(OMBREL_TESTS)
  add_compile_options(-Werror) # not for those who only build it, with whatever compiler they have
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # A false alarm of this version on "[" + std::string (GCC bug 105651).
  add_compile_options(-Wno-restrict)
endif()
if(OMBREL_SANITIZE)
  add_compile_options(-fsanitize=${OMBREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${OMBREL_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/cmake/sanitizers.ignore)
  endif()
endif()
find_package(Threads REQUIRED)

# ombrel_library(FOLDER [LIBRARIES…]): the library ombrel_FOLDER of all sources in this folder.
# It sees the headers of the folders that it links, and of no others' by the include check.
function(ombrel_library folder)
  file(GLOB sources CONFIGURE_DEPENDS *.cpp *.h)
  list(FILTER sources EXCLUDE REGEX "Main\\.cpp$")
  set(has_code ${sources})
  list(FILTER has_code INCLUDE REGEX "\\.cpp$")
  if(has_code)
    add_library(ombrel_${folder} STATIC ${sources})
    target_include_directories(ombrel_${folder} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(ombrel_${folder} PUBLIC ${ARGN})
  else()
    add_library(ombrel_${folder} INTERFACE)
    target_include_directories(ombrel_${folder} INTERFACE ${PROJECT_SOURCE_DIR}/src)
    target_link_libraries(ombrel_${folder} INTERFACE ${ARGN})
  endif()
endfunction()

# ombrel_tests(FOLDER [LIBRARIES…]): the executable FOLDER_test of all *Test.cpp in tests/FOLDER.
function(ombrel_tests folder)
  file(GLOB sources CONFIGURE_DEPENDS ${folder}/*.cpp ${folder}/*.h)
  if(NOT sources)
    return()
  endif()
  add_executable(${folder}_test ${sources})
  target_include_directories(${folder}_test PRIVATE ${PROJECT_SOURCE_DIR})
  target_compile_definitions(${folder}_test PRIVATE
    OMBREL_SOURCE_DIR="${PROJECT_SOURCE_DIR}" OMBREL_BINARY_DIR="${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
  target_link_libraries(${folder}_test PRIVATE ${ARGN} GTest::gtest GTest::gtest_main Threads::Threads)
  gtest_discover_tests(${folder}_test DISCOVERY_MODE PRE_TEST PROPERTIES LABELS ${folder} TIMEOUT 300)
endfunction()
