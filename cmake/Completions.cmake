# The completion scripts, which the companion writes itself, where each shell looks for them. One
# serves both tools; bash and fish load it by the tool's name.
set(THERMIKA_ZSH_COMPLETIONS ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Directory of zsh's completion functions, below the prefix")

set(scripts "")
foreach(shell bash zsh fish)
    set(script ${PROJECT_BINARY_DIR}/completions/thermika.${shell})
    add_custom_command(OUTPUT ${script}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/completions
        COMMAND thermika-cli completion ${shell} > ${script}
        DEPENDS thermika-cli VERBATIM)
    list(APPEND scripts ${script})
endforeach()
add_custom_target(thermika-completions ALL DEPENDS ${scripts})

list(GET scripts 0 bash)
list(GET scripts 1 zsh)
list(GET scripts 2 fish)
foreach(tool thermika thermika-genconfig)
    install(FILES ${bash} RENAME ${tool}
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
    install(FILES ${fish} RENAME ${tool}.fish
        DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endforeach()
install(FILES ${zsh} RENAME _thermika DESTINATION ${THERMIKA_ZSH_COMPLETIONS})
