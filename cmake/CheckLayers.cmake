# The library's floors: a unit may include units of its own folder and of
# folders on lower floors, never of a higher floor or of another folder on
# its own floor. Run as a test: cmake -DSOURCE_DIR=<repository> -P CheckLayers.cmake
#
#   floor  folders
#   0      runtime       run-time semantics: string lists, numbers, INI files
#   1      omslib        the OMS library: log, OMS INI, hash lists, messages, bus
#   2      db  model     the database layer; the order and trade records
#   3      orderdb       connections, loading and saving orders, manual trades
#   4      profile       application and user profiles, accounts, entitlements
#   5      market        price ladders and per-exchange instruction views
#   6      (entry)       qalpack.h / qalpack.cpp, the plain C exports
#   7      feedback      what a dealer sees and hears besides text: scheme
#                        colours, beeps, the "System Alert" box (the widgets
#                        library, as are the two floors above)
#   8      forms         dialogs and item models a screen shows: the account
#                        explorer, the blotter model
#   9      controls      order-entry widgets; the account box opens the
#                        explorer, so the controls stand on the forms
set(floor_runtime 0)
set(floor_omslib 1)
set(floor_db 2)
set(floor_model 2)
set(floor_orderdb 3)
set(floor_profile 4)
set(floor_market 5)
set(floor_entry 6)
set(floor_feedback 7)
set(floor_forms 8)
set(floor_controls 9)

file(GLOB_RECURSE files RELATIVE "${SOURCE_DIR}/qalpack" "${SOURCE_DIR}/qalpack/*.h" "${SOURCE_DIR}/qalpack/*.cpp")
set(violations "")
foreach(file IN LISTS files)
  if(file MATCHES "^([a-z]+)/")
    set(from "${CMAKE_MATCH_1}")
  else()
    set(from entry)
  endif()
  if(NOT DEFINED floor_${from})
    list(APPEND violations "qalpack/${file}: folder \"${from}\" has no floor in cmake/CheckLayers.cmake")
    continue()
  endif()
  file(STRINGS "${SOURCE_DIR}/qalpack/${file}" includes REGEX "^#include \"qalpack/")
  foreach(line IN LISTS includes)
    if(line MATCHES "^#include \"qalpack/([a-z]+)/")
      set(to "${CMAKE_MATCH_1}")
    else()
      set(to entry)
    endif()
    if(line MATCHES "qalpack/qalpack(_widgets)?_export\\.h|qalpack/version\\.h")
      continue()
    endif()
    if(to STREQUAL from)
      continue()
    endif()
    if(NOT DEFINED floor_${to} OR NOT floor_${to} LESS floor_${from})
      list(APPEND violations "qalpack/${file} (${from}, floor ${floor_${from}}) includes ${to}: ${line}")
    endif()
  endforeach()
endforeach()

if(violations)
  list(JOIN violations "\n  " text)
  message(FATAL_ERROR "Includes that go up or sideways a floor:\n  ${text}")
endif()
list(LENGTH files count)
message(STATUS "layering: ${count} files, every include goes down a floor or stays in its folder")
