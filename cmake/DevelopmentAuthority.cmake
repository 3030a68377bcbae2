include_guard()

function(_velno_openssl)
    execute_process(COMMAND ${VELNO_OPENSSL} ${ARGN} RESULT_VARIABLE result ERROR_VARIABLE reason OUTPUT_QUIET)
    if(NOT result EQUAL 0)
        message(FATAL_ERROR "The development authority could not be made: openssl ${ARGN}: ${reason}")
    endif()
endfunction()

# A key and a certificate under `issuer` (itself when empty), as NAME.key and NAME.crt in the working folder.
function(_velno_certificate folder name subject days extension issuer)
    _velno_openssl(genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out ${folder}/${name}.key)
    if(issuer STREQUAL "")
        _velno_openssl(req -x509 -new -utf8 -key ${folder}/${name}.key -subj ${subject} -days ${days}
                       -config ${folder}/authority.cnf -extensions ${extension} -out ${folder}/${name}.crt)
        return()
    endif()
    _velno_openssl(req -new -utf8 -key ${folder}/${name}.key -subj ${subject} -config ${folder}/authority.cnf
                   -out ${folder}/${name}.csr)
    string(RANDOM LENGTH 15 ALPHABET 123456789 serial)
    _velno_openssl(x509 -req -in ${folder}/${name}.csr -CA ${folder}/${issuer}.crt -CAkey ${folder}/${issuer}.key
                   -set_serial ${serial} -days ${days} -sha256 -extfile ${folder}/authority.cnf
                   -extensions ${extension} -out ${folder}/${name}.crt)
endfunction()

# Root, sub CA and one register under it, with fresh keys, in `folder`; the authority's keys are thrown away,
# so nothing else can ever be issued under it. Kept when it is already there.
function(velno_development_authority folder)
    if(EXISTS ${folder}/trust-anchors.pem)
        return()
    endif()
    find_program(VELNO_OPENSSL openssl REQUIRED)
    set(work ${folder}/work)
    file(REMOVE_RECURSE ${folder})
    file(MAKE_DIRECTORY ${work} ${folder}/register)
    file(WRITE ${work}/authority.cnf
"[req]
distinguished_name = name
prompt = no
[name]
[authority]
basicConstraints = critical,CA:TRUE
keyUsage = critical,keyCertSign,cRLSign
subjectKeyIdentifier = hash
[register]
basicConstraints = critical,CA:FALSE
keyUsage = critical,digitalSignature
subjectKeyIdentifier = hash
authorityKeyIdentifier = keyid
")
    _velno_certificate(${work} root "/C=TR/O=Velno Development/CN=Velno Development Root CA" 3650 authority "")
    _velno_certificate(${work} sub "/C=TR/O=Velno Development/CN=Velno Development Sub CA" 3650 authority root)
    _velno_certificate(${work} client "/C=TR/O=Velno Development/CN=Velno Development Register" 3650 register sub)
    file(RENAME ${work}/client.crt ${folder}/register/client.crt)
    file(RENAME ${work}/client.key ${folder}/register/client.key)
    file(READ ${work}/sub.crt sub)
    file(READ ${work}/root.crt root)
    file(REMOVE_RECURSE ${work})
    file(WRITE ${folder}/trust-anchors.pem "${sub}${root}")
endfunction()
