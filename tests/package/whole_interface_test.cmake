# <murvane/audio.h> includes every public header.
#
# cmake -D SOURCE_DIR=... -P whole_interface_test.cmake
file(READ ${SOURCE_DIR}/audio/include/murvane/audio.h umbrella)
file(GLOB include_dirs ${SOURCE_DIR}/audio/include ${SOURCE_DIR}/support/*/include)
foreach(include_dir IN LISTS include_dirs)
  file(GLOB_RECURSE headers RELATIVE ${include_dir} ${include_dir}/*.h)
  foreach(header IN LISTS headers)
    string(FIND "${umbrella}" "#include <${header}>" found)
    if(found EQUAL -1 AND NOT header STREQUAL "murvane/audio.h")
      message(SEND_ERROR "<murvane/audio.h> does not include <${header}>")
    endif()
  endforeach()
endforeach()
