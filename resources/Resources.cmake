# Compiles the module's translations and puts them into the library as resource data.
set(translation_dir ${CMAKE_CURRENT_BINARY_DIR}/translations)
file(GLOB translation_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/resources/CoreXml_*.ts)

set(translation_files)
foreach(source IN LISTS translation_sources)
  get_filename_component(name ${source} NAME_WE)
  set(file ${translation_dir}/${name}.qm)
  add_custom_command(
    OUTPUT ${file}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${translation_dir}
    COMMAND Qt6::lrelease -silent ${source} -qm ${file}
    DEPENDS ${source}
    VERBATIM)
  list(APPEND translation_files ${file})
endforeach()

# The list names its files relative to itself. Without a name of its own the data is registered by
# functions called qInitResources and qCleanupResources; they are hidden, so that an application or
# another library may have its own. An archive hides nothing, so there they bear a name.
set(resource_name)
if(KESCOREXML_LIBRARY_TYPE STREQUAL "STATIC")
  set(resource_name --name kescorexml)
endif()
configure_file(${PROJECT_SOURCE_DIR}/resources/kescorexml.qrc
  ${translation_dir}/kescorexml.qrc COPYONLY)
set(resource_source ${CMAKE_CURRENT_BINARY_DIR}/KesResources.cpp)
add_custom_command(
  OUTPUT ${resource_source}
  COMMAND Qt6::rcc ${resource_name} --no-compress --format-version 3
    ${translation_dir}/kescorexml.qrc -o ${resource_source}
  DEPENDS ${translation_dir}/kescorexml.qrc ${translation_files}
  VERBATIM)

target_sources(kescorexml_objects PRIVATE ${resource_source})
target_include_directories(kescorexml_objects PRIVATE ${PROJECT_SOURCE_DIR}/resources)
