# The Windows build: TaviClient.exe and the engine modules that its end-to-end tests load
# (the recording engine, a module without the tracer and, with clang, one built for the
# Microsoft C++ ABI). The preview engine, the tools, the tests and the benchmarks need
# libraries that Debian builds for Linux only.
#
# pugixml and zstd are compiled here from their sources (tools/windows-sources.sh unpacks
# Debian's), as static libraries under the names the Linux build finds them by.
set(TAVI_THIRD_PARTY_SOURCES "" CACHE PATH "Folder with the sources of pugixml/ and zstd/")
if(NOT EXISTS "${TAVI_THIRD_PARTY_SOURCES}/pugixml/src/pugixml.cpp"
   OR NOT EXISTS "${TAVI_THIRD_PARTY_SOURCES}/zstd/lib/zstd.h")
  message(FATAL_ERROR "TAVI_THIRD_PARTY_SOURCES must hold pugixml/ and zstd/ (tools/windows-sources.sh)")
endif()

add_library(pugixml STATIC ${TAVI_THIRD_PARTY_SOURCES}/pugixml/src/pugixml.cpp)
target_include_directories(pugixml SYSTEM PUBLIC ${TAVI_THIRD_PARTY_SOURCES}/pugixml/src)
target_compile_options(pugixml PRIVATE -w)

# The client only decodes, so the decoder is all of zstd it needs. Its assembly is written for
# ELF and Mach-O, not for Windows objects.
set(zstd_lib ${TAVI_THIRD_PARTY_SOURCES}/zstd/lib)
add_library(zstd_decoder STATIC
  ${zstd_lib}/common/debug.c
  ${zstd_lib}/common/entropy_common.c
  ${zstd_lib}/common/error_private.c
  ${zstd_lib}/common/fse_decompress.c
  ${zstd_lib}/common/xxhash.c
  ${zstd_lib}/common/zstd_common.c
  ${zstd_lib}/decompress/huf_decompress.c
  ${zstd_lib}/decompress/zstd_ddict.c
  ${zstd_lib}/decompress/zstd_decompress.c
  ${zstd_lib}/decompress/zstd_decompress_block.c)
target_include_directories(zstd_decoder SYSTEM PUBLIC ${zstd_lib})
target_compile_definitions(zstd_decoder PRIVATE ZSTD_DISABLE_ASM ZSTD_LEGACY_SUPPORT=0)
target_compile_options(zstd_decoder PRIVATE -w)
add_library(PkgConfig::ZSTD ALIAS zstd_decoder)

find_package(Threads REQUIRED)

include_directories(${CMAKE_SOURCE_DIR})

add_subdirectory(platform)
add_subdirectory(common)
add_subdirectory(memory)
add_subdirectory(scene)
add_subdirectory(documents)
add_subdirectory(client)
add_subdirectory(engines/recording)

# An engine for the Microsoft C++ ABI, where clang and lld-link are there to build it.
find_program(TAVI_CLANG_CXX clang++)
find_program(TAVI_LLD_LINK lld-link)
if(TAVI_CLANG_CXX AND TAVI_LLD_LINK)
  add_subdirectory(engines/msvc_abi)
else()
  message(STATUS "clang++ or lld-link not found: no engine for the Microsoft C++ ABI")
endif()

# Arguments arrive as UTF-16 through the wide entry point.
target_link_options(TaviClient PRIVATE -municode)

add_library(invalid_engine MODULE tests/support/no_tracer_module.cpp)
set_target_properties(invalid_engine PROPERTIES
  OUTPUT_NAME TaviTracerAVX
  PREFIX ""
  LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/engines/invalid)
