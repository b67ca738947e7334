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

# ts5_room(NAME [DEPENDS room...] [PUBLIC_LIBRARIES lib...] [PRIVATE_LIBRARIES lib...])
function(ts5_room name)
  cmake_parse_arguments(ARG "" "" "DEPENDS;PUBLIC_LIBRARIES;PRIVATE_LIBRARIES" ${ARGN})
  list(TRANSFORM ARG_DEPENDS PREPEND ts5_)
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/*.cpp)
  add_library(ts5_${name} STATIC ${sources})
  target_link_libraries(ts5_${name}
    PUBLIC ts5_settings ${ARG_DEPENDS} ${ARG_PUBLIC_LIBRARIES}
    PRIVATE ${ARG_PRIVATE_LIBRARIES})

  file(GLOB windows CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/src/${name}/ui/*.cpp
                                      ${CMAKE_SOURCE_DIR}/src/${name}/ui/*.h)
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
  endif()
endfunction()

# The table of the seventeen filters: the one file that knows all rooms, shared by both programs.
function(ts5_modules)
  cmake_parse_arguments(ARG "" "" "DEPENDS" ${ARGN})
  list(TRANSFORM ARG_DEPENDS PREPEND ts5_)
  add_library(ts5_modules STATIC ${CMAKE_SOURCE_DIR}/src/app/filter_modules.cpp)
  target_link_libraries(ts5_modules PUBLIC ts5_settings ${ARG_DEPENDS})
endfunction()
