# An installation is the programs in bin/ and the plug-in in lib/, where the programs look for it.
if(TARGET clockhost)
  install(TARGETS clockhost clockctl ntpclient RUNTIME DESTINATION bin)
  install(TARGETS ClockService LIBRARY DESTINATION lib)
endif()
