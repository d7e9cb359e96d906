# Settings files and the paths of the user's folders.
zarn_add_test(plist_settings_test
    SOURCES paths_test.cpp plist_document_test.cpp plist_settings_test.cpp
    LIBS zarn_linux_settings)
