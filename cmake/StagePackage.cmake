# Puts the sources of a Swift package together as they are shipped, with a stamp of their content.
#
#   cmake -D SOURCE=FOLDER -D DESTINATION=FOLDER -P StagePackage.cmake
#
# Shipped are the manifest, the read-me and Sources/; neither tests nor build results. The stamp is
# the same for the same files, and another one for any other files.
file(GLOB_RECURSE files RELATIVE ${SOURCE} LIST_DIRECTORIES false ${SOURCE}/Sources/*)
list(SORT files)
foreach(name README.md Package.swift)
  if(EXISTS ${SOURCE}/${name})
    list(PREPEND files ${name})
  endif()
endforeach()
file(REMOVE_RECURSE ${DESTINATION})
file(SHA256 ${CMAKE_CURRENT_LIST_FILE} content)
foreach(name IN LISTS files)
  file(SHA256 ${SOURCE}/${name} hash)
  string(APPEND content "${hash} ${name}\n")
  get_filename_component(folder ${DESTINATION}/${name} DIRECTORY)
  file(COPY ${SOURCE}/${name} DESTINATION ${folder})
endforeach()
# The tests are not there, so the manifest must not name them.
file(APPEND ${DESTINATION}/Package.swift "\npackage.targets.removeAll { $0.type == .test }\n")
string(SHA256 stamp "${content}")
file(WRITE ${DESTINATION}/.ombrel-bundle-stamp "${stamp}\n")
