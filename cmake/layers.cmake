# Each layer's target sees the private folders of src/ that its layer may include, and no others: a
# folder per target under the build tree holds links to just those folders. An include that goes up a
# layer then finds no file, and the build stops there.
function(scrivlet_layer_includes target)
  set(dir ${PROJECT_BINARY_DIR}/layer_includes/${target})
  file(MAKE_DIRECTORY ${dir})
  foreach(folder IN LISTS ARGN)
    if(NOT EXISTS ${dir}/${folder})
      file(CREATE_LINK ${PROJECT_SOURCE_DIR}/src/${folder} ${dir}/${folder} SYMBOLIC)
    endif()
  endforeach()
  target_include_directories(${target} PRIVATE ${dir})
endfunction()

set(SCRIVLET_PLATFORM_FOLDERS platform)
set(SCRIVLET_ENGINE_FOLDERS ${SCRIVLET_PLATFORM_FOLDERS} render capture export controller public)
set(SCRIVLET_HOST_FOLDERS ${SCRIVLET_ENGINE_FOLDERS} host)
set(SCRIVLET_EVIDENCE_FOLDERS ${SCRIVLET_HOST_FOLDERS} evidence)
