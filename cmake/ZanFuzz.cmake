# What the fuzz preset needs beyond the other builds: a compiler with libFuzzer, and the XML parser
# from its source, so that the fuzzer sees the branches that a document takes in it. Debian ships
# the parser as a finished library, whose branches count for nothing.

if(ZAN_FUZZ)
  include(CheckCXXSourceCompiles)
  set(CMAKE_REQUIRED_FLAGS -fsanitize=fuzzer)
  check_cxx_source_compiles(
    "#include <cstddef>
     extern \"C\" int LLVMFuzzerTestOneInput(const unsigned char*, std::size_t) { return 0; }"
    ZAN_HAS_LIBFUZZER)
  unset(CMAKE_REQUIRED_FLAGS)
  if(NOT ZAN_HAS_LIBFUZZER)
    unset(ZAN_HAS_LIBFUZZER CACHE)
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER} cannot link with -fsanitize=fuzzer.\n"
      "Remedy: run scripts/setup, which installs clang and its libFuzzer, and use the preset fuzz.")
  endif()
endif()

if(ZAN_PUGIXML_SOURCE)
  if(NOT EXISTS ${ZAN_PUGIXML_SOURCE}/src/pugixml.cpp)
    message(FATAL_ERROR "There is no source of pugixml in ${ZAN_PUGIXML_SOURCE}.\n"
      "Remedy: run scripts/fetch-pugixml, which gets Debian's source package there.")
  endif()
  add_library(zan_pugixml STATIC ${ZAN_PUGIXML_SOURCE}/src/pugixml.cpp)
  target_include_directories(zan_pugixml SYSTEM PUBLIC ${ZAN_PUGIXML_SOURCE}/src)
  if(ZAN_SANITIZE)
    target_compile_options(zan_pugixml PRIVATE -fsanitize=${ZAN_SANITIZE}
      -fno-omit-frame-pointer -fno-sanitize-recover=all)
  endif()
  add_library(pugixml::pugixml ALIAS zan_pugixml)
endif()
