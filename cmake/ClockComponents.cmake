# clock_add_component(NAME name SOURCES file... [NEEDS component...] [LIBS target...]): a folder of
# the host. A target that links `name` gets all its objects and those of the components that it
# needs, because a plug-in may use any of them. `name_objects` is the folder alone, for tests that
# replace other components.
function(clock_add_component)
  cmake_parse_arguments(PART "" "NAME" "SOURCES;NEEDS;LIBS" ${ARGN})
  set(objects ${PART_NAME}_objects)
  add_library(${objects} OBJECT ${PART_SOURCES})
  target_link_libraries(${objects} PUBLIC host_headers ${PART_LIBS})
  add_library(${PART_NAME} INTERFACE)
  target_sources(${PART_NAME} INTERFACE $<TARGET_OBJECTS:${objects}>)
  target_link_libraries(${PART_NAME} INTERFACE ${objects} ${PART_NEEDS})
  foreach(need IN LISTS PART_NEEDS)
    target_link_libraries(${objects} PUBLIC ${need}_objects)
  endforeach()
endfunction()
