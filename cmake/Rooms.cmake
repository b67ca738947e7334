# A room is one library below src/: its logic, and beside it (never inside it) its windows in <room>/ui.

# What a target with windows needs: moc, and the dialog templates compiled as ui_NAME.h. Naming the files makes
# moc and uic run again when one is added, which the build would otherwise not notice.
function(ts5_windows target)
  get_target_property(sources ${target} SOURCES)
  file(GLOB templates CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/resources/dialogs/*.ui)
  set_target_properties(${target} PROPERTIES
    AUTOMOC ON AUTOUIC ON AUTOUIC_SEARCH_PATHS ${CMAKE_SOURCE_DIR}/src/resources/dialogs
    AUTOGEN_TARGET_DEPENDS "${sources};${templates}")
endfunction()

# ts5_platform(FOLDER [DEPENDS folder...] [LIBRARIES lib...] [HIDDEN lib...]): a folder of the platform as a library.
# What is hidden is included below that folder only. The libraries of sound devices set macros of the C library, so
# their folder reads all headers anew.
function(ts5_platform folder)
  cmake_parse_arguments(ARG "" "" "DEPENDS;LIBRARIES;HIDDEN" ${ARGN})
  list(TRANSFORM ARG_DEPENDS PREPEND ts5_platform_)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/platform/${folder}/*.cpp)
  add_library(ts5_platform_${folder} STATIC ${sources})
  target_link_libraries(ts5_platform_${folder}
    PUBLIC ts5_settings ${ARG_DEPENDS} ${ARG_LIBRARIES}
    PRIVATE ${ARG_HIDDEN})
  if(NOT folder STREQUAL "sound")
    ts5_precompiled(ts5_platform_${folder} LOGIC)
  endif()
endfunction()

# ts5_room(NAME [FOLDER path] [DEPENDS room...] [PUBLIC_LIBRARIES lib...] [PRIVATE_LIBRARIES lib...])
function(ts5_room name)
  cmake_parse_arguments(ARG "" "FOLDER" "DEPENDS;PUBLIC_LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  list(TRANSFORM ARG_DEPENDS PREPEND ts5_)
  if(NOT ARG_FOLDER)
    set(ARG_FOLDER ${name})
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/*.cpp)
  add_library(ts5_${name} STATIC ${sources})
  target_link_libraries(ts5_${name}
    PUBLIC ts5_settings ${ARG_DEPENDS} ${ARG_PUBLIC_LIBRARIES}
    PRIVATE ${ARG_PRIVATE_LIBRARIES})
  ts5_precompiled(ts5_${name} LOGIC)

  file(GLOB windows CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/ui/*.cpp
                                      ${CMAKE_SOURCE_DIR}/src/${ARG_FOLDER}/ui/*.h)
  if(TS5_DESKTOP AND windows)
    add_library(ts5_${name}_ui STATIC ${windows})
    ts5_windows(ts5_${name}_ui)
    list(TRANSFORM ARG_DEPENDS APPEND _ui OUTPUT_VARIABLE ui_depends)
    set(present)
    foreach(target IN LISTS ui_depends)
      if(TARGET ${target})
        list(APPEND present ${target})
      endif()
    endforeach()
    target_link_libraries(ts5_${name}_ui PUBLIC ts5_${name} ${present} ts5_resources Qt6::Widgets Qt6::Svg Qt6::PrintSupport)
    ts5_precompiled(ts5_${name}_ui WINDOWS)
  endif()
endfunction()

# The table of the seventeen filters: the one file that knows all rooms, shared by both programs.
function(ts5_modules)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  list(TRANSFORM ARG_DEPENDS PREPEND ts5_)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/modules/*.cpp)
  add_library(ts5_modules STATIC ${sources})
  target_link_libraries(ts5_modules PUBLIC ts5_settings ${ARG_DEPENDS})
endfunction()
