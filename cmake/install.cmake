# What an installation holds. Folders keep their places beside each other, since relative paths lead from one to the
# other.
# Component "module": what a recorder of somebody else's needs.
install(TARGETS cameracap LIBRARY DESTINATION lib/cameracap COMPONENT module)
install(DIRECTORY images DESTINATION share/cameracap COMPONENT module)
# Component "embedding": what its author needs besides.
install(DIRECTORY platform interface DESTINATION include COMPONENT embedding EXCLUDE_FROM_ALL
  FILES_MATCHING PATTERN *.h)
install(DIRECTORY docs/examples/host/ DESTINATION . COMPONENT embedding EXCLUDE_FROM_ALL)
install(FILES LICENSE DESTINATION . COMPONENT embedding EXCLUDE_FROM_ALL)
if(MODULE_ONLY)
  return()
endif()

# The programs find each other beside themselves.
install(TARGETS recorderctl recorder-login recorder-webapi recorder-watch recorder-media
  RUNTIME DESTINATION lib/cameracap COMPONENT recorder)
install(DIRECTORY models page DESTINATION share/cameracap COMPONENT recorder
  PATTERN simcam.json EXCLUDE  # cameras that nobody owns
  PATTERN tsconfig.json EXCLUDE
  PATTERN README.md EXCLUDE)
install(FILES docs/openapi.yaml docs/config.schema.json DESTINATION share/cameracap/docs COMPONENT recorder)
