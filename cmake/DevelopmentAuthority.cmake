# SPDX-License-Identifier: Apache-2.0
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

# The same under the sub CA with a validity that ended in the past, for a register that missed its renewal.
function(_velno_expired_certificate folder name subject)
    _velno_openssl(genpkey -quiet -algorithm RSA -pkeyopt rsa_keygen_bits:2048 -out ${folder}/${name}.key)
    _velno_openssl(req -new -utf8 -key ${folder}/${name}.key -subj ${subject} -config ${folder}/authority.cnf
                   -out ${folder}/${name}.csr)
    file(WRITE ${folder}/index.txt "")
    _velno_openssl(ca -batch -notext -config ${folder}/authority.cnf -name past -policy anything
                   -in ${folder}/${name}.csr -cert ${folder}/sub.crt -keyfile ${folder}/sub.key
                   -startdate 20200101000000Z -enddate 20210101000000Z
                   -extfile ${folder}/authority.cnf -extensions register -out ${folder}/${name}.crt)
endfunction()

# Root, sub CA and one register under it, once more with an expired certificate, with fresh keys, in `folder`; the
# authority's keys are thrown away, so nothing else can ever be issued under it. Kept when it is already there.
function(velno_development_authority folder)
    if(EXISTS ${folder}/trust-anchors.pem AND EXISTS ${folder}/register/expired.crt)
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
[past]
database = ${work}/index.txt
new_certs_dir = ${work}
default_md = sha256
rand_serial = yes
[anything]
countryName = supplied
organizationName = supplied
commonName = supplied
")
    _velno_certificate(${work} root "/C=TR/O=Velno Development/CN=Velno Development Root CA" 3650 authority "")
    _velno_certificate(${work} sub "/C=TR/O=Velno Development/CN=Velno Development Sub CA" 3650 authority root)
    _velno_certificate(${work} client "/C=TR/O=Velno Development/CN=Velno Development Register" 3650 register sub)
    _velno_expired_certificate(${work} expired "/C=TR/O=Velno Development/CN=Velno Development Register")
    foreach(file client.crt client.key expired.crt expired.key)
        file(RENAME ${work}/${file} ${folder}/register/${file})
    endforeach()
    file(READ ${work}/sub.crt sub)
    file(READ ${work}/root.crt root)
    file(REMOVE_RECURSE ${work})
    file(WRITE ${folder}/trust-anchors.pem "${sub}${root}")
endfunction()
