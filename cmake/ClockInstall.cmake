# Installs the programs in bin/ and the plug-in in lib/, where the programs look for it.
install(TARGETS clockhost clockctl ntpclient RUNTIME DESTINATION bin)
install(TARGETS ClockService LIBRARY DESTINATION lib)
