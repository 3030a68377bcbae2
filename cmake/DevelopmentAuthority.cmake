# SPDX-License-Identifier: Apache-2.0
include_guard()

set(_velno_make_authority ${CMAKE_CURRENT_LIST_DIR}/../simulator/make-authority)

# Root, sub CA and one register under it, once more with an expired certificate, in `folder`: those of the folder that
# `given` names, which make-authority has made, or with fresh keys, kept when they are there already.
function(velno_development_authority given folder)
    if(given)
        if(NOT EXISTS ${given}/trust-anchors.pem OR NOT EXISTS ${given}/register/client.crt)
            message(FATAL_ERROR "VELNO_DEVELOPMENT_AUTHORITY: ${given}: this is no folder that "
                                "simulator/make-authority has made")
        endif()
        file(REMOVE_RECURSE ${folder})
        file(COPY ${given}/ DESTINATION ${folder})
        return()
    elseif(EXISTS ${folder}/trust-anchors.pem AND EXISTS ${folder}/register/expired.crt)
        return()
    endif()
    file(REMOVE_RECURSE ${folder})
    execute_process(COMMAND ${_velno_make_authority} ${folder} RESULT_VARIABLE result ERROR_VARIABLE reason)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "The development authority could not be made: ${reason}")
    endif()
endfunction()
