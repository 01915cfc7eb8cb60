# Packs what is staged for the archive: one order, one owner, one mode, one time.
set(time)
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(time --mtime=@$ENV{SOURCE_DATE_EPOCH})
endif()
cmake_path(GET CPACK_TEMPORARY_DIRECTORY PARENT_PATH staged)
execute_process(
  COMMAND tar --create --file=${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.tar.xz
    "--use-compress-program=xz -9 -T1" --format=ustar --sort=name --owner=0 --group=0 --numeric-owner
    --mode=u=rwX,go=rX ${time} --directory=${staged} ${CPACK_PACKAGE_FILE_NAME}
  COMMAND_ERROR_IS_FATAL ANY)
