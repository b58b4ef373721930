# Installs the host: its programs in bin/, manual pages, completions and systemd units where the tools look
# for them. --prefix and DESTDIR are those of cmake --install.
set(programs clockhost clockctl)
if(TARGET clockpanel) # where Boost is
  list(APPEND programs clockpanel)
endif()
install(TARGETS ${programs} RUNTIME DESTINATION bin)
install(TARGETS ntpclient RUNTIME DESTINATION libexec/clockhost) # only the host starts it

set(manual ${CMAKE_BINARY_DIR}/manual)
foreach(section 1 5 7)
  install(DIRECTORY ${manual}/ DESTINATION share/man/man${section} FILES_MATCHING PATTERN "*.${section}")
endforeach()
foreach(program IN LISTS programs)
  install(FILES ${manual}/${program}.bash DESTINATION share/bash-completion/completions RENAME ${program})
  install(FILES ${manual}/_${program} DESTINATION share/zsh/site-functions)
  install(FILES ${manual}/${program}.fish DESTINATION share/fish/vendor_completions.d)
endforeach()

# The units name the host's path, which only the installation knows. They share service.conf.
foreach(manager user system)
  install(CODE "file(READ ${PROJECT_SOURCE_DIR}/host/units/service.conf CLOCK_SERVICE)
    configure_file(${PROJECT_SOURCE_DIR}/host/units/${manager}.service.in
      ${CMAKE_BINARY_DIR}/units/${manager}/clockhost.service @ONLY)")
  install(FILES ${CMAKE_BINARY_DIR}/units/${manager}/clockhost.service DESTINATION lib/systemd/${manager})
endforeach()
