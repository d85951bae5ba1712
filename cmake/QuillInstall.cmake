# Where things go on "cmake --install BUILD --prefix P". The module lies on its own in a folder of
# Python's, so P can be a Python or a virtual environment; for any other P, PYTHONPATH names the
# folder. What the module needs of ours lies beside it, where both operating systems look first:
#
#   site-packages/QuillScriptsSDK.<tag>.so, .pyd      the module
#   site-packages/libsimcore.so, simcore.dll ...      runtime libraries
#   site-packages/public/dbc_to_json/<platform>       converters
#   site-packages/QuillScriptsSDK-stubs               type stub
#   bin/quilltrace                                    trace files on the command line
#
# Type checkers find a stub beside a module only inside packages that say so with a py.typed file
# (PEP 561); for a module on its own they want a package named after it with "-stubs" behind.
if(WIN32)
    set(default_python_folder Lib/site-packages)
    set(QUILL_PLATFORM_FOLDER win)
else()
    set(default_python_folder
        lib/python${Python_VERSION_MAJOR}.${Python_VERSION_MINOR}/site-packages)
    set(QUILL_PLATFORM_FOLDER linux)
endif()
set(QUILL_INSTALL_PYTHON_FOLDER ${default_python_folder} CACHE STRING
    "Folder for the module below the install prefix")
# Below the folder of the module, in the build tree as in an installed one.
set(QUILL_CONVERTER_FOLDER public/dbc_to_json/${QUILL_PLATFORM_FOLDER})

# All that is installed, without tests and benches.
add_custom_target(quill_package)

# quill_install(TARGET FOLDER): a program, module or runtime library of ours.
function(quill_install target folder)
    install(TARGETS ${target}
        RUNTIME DESTINATION ${folder} LIBRARY DESTINATION ${folder}
        ARCHIVE DESTINATION lib)
    add_dependencies(quill_package ${target})
endfunction()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/pysdk/stubs/
    DESTINATION ${QUILL_INSTALL_PYTHON_FOLDER})
install(FILES README.md CHANGELOG.md LICENSE DESTINATION share/doc/quillscriptssdk)
install(FILES platform/simcore/network.schema.json
    DESTINATION share/doc/quillscriptssdk/platform/simcore)
install(DIRECTORY docs examples DESTINATION share/doc/quillscriptssdk
    PATTERN __pycache__ EXCLUDE)
