# Resolves an exported function of the shipped DLL from the shipped symbols alone: its
# address from the export table, then its name from tarnix-rmi.pdb (the public symbol at
# that address; the PDB must be the one the DLL names, GUID and age) and its name and
# source file from tarnix-rmi.debug (the DWARF the DLL names by debuglink).
#   cmake -DBIN=<installed bin> -DOBJDUMP=... -DPDBUTIL=... -DADDR2LINE=... -P CheckSymbols.cmake
set(export "?GetInstance@CRMICommManager@@SAAEAV1@XZ")
set(function "_ZN15CRMICommManager11GetInstanceEv")
execute_process(COMMAND ${OBJDUMP} -p ${BIN}/tarnix-rmi.dll OUTPUT_VARIABLE headers)

string(REGEX MATCH "ImageBase[\t ]+([0-9a-fA-F]+)" _ "${headers}")
set(image_base ${CMAKE_MATCH_1})
string(REGEX MATCH "\\[ *([0-9]+)\\] [^\n]*\\?GetInstance@CRMICommManager@@SAAEAV1@XZ\n" _ "${headers}")
set(index ${CMAKE_MATCH_1})
string(REGEX MATCH "\\[ *${index}\\] \\+base\\[ *[0-9]+\\] +([0-9a-fA-F]+) Export RVA" _ "${headers}")
set(rva ${CMAKE_MATCH_1})
if(NOT image_base OR index STREQUAL "" OR NOT rva)
  message(FATAL_ERROR "no export ${export} in tarnix-rmi.dll")
endif()
math(EXPR rva_value "0x${rva}")

# The DLL's CodeView record names the PDB by GUID and age.
string(REGEX MATCH "RSDS signature ([0-9a-f]+) age ([0-9]+) pdb ([^)\n]*)" _ "${headers}")
set(signature ${CMAKE_MATCH_1})
set(age ${CMAKE_MATCH_2})
set(pdb_file ${CMAKE_MATCH_3})
execute_process(COMMAND ${PDBUTIL} dump -summary ${BIN}/tarnix-rmi.pdb OUTPUT_VARIABLE summary)
string(REGEX MATCH "GUID: {([0-9A-F-]+)}" _ "${summary}")
string(REPLACE "-" "" pdb_guid "${CMAKE_MATCH_1}")
string(TOUPPER "${signature}" signature_guid)
string(REGEX MATCH "Age: ([0-9]+)" _ "${summary}")
if(NOT signature OR NOT signature_guid STREQUAL pdb_guid OR NOT age EQUAL CMAKE_MATCH_1
   OR NOT pdb_file MATCHES "tarnix-rmi\\.pdb$")
  message(FATAL_ERROR "tarnix-rmi.dll does not name this tarnix-rmi.pdb: ${pdb_file} ${signature} age ${age}, PDB ${pdb_guid}")
endif()

# The public symbol at the export's address: section base plus offset.
execute_process(COMMAND ${PDBUTIL} dump -publics -section-headers ${BIN}/tarnix-rmi.pdb
  OUTPUT_VARIABLE pdb)
string(REGEX MATCHALL "SECTION HEADER #[0-9]+\n[^\n]*\n[^\n]*\n +[0-9A-F]+ virtual address" sections "${pdb}")
set(pdb_name "")
string(REGEX MATCHALL "`[^`]+`\n +flags = function, addr = [0-9]+:[0-9]+" publics "${pdb}")
foreach(public ${publics})
  string(REGEX MATCH "`([^`]+)`\n +flags = function, addr = ([0-9]+):([0-9]+)" _ "${public}")
  set(name ${CMAKE_MATCH_1})
  math(EXPR section "${CMAKE_MATCH_2}")  # "0001" names section header #1
  set(offset ${CMAKE_MATCH_3})
  foreach(header ${sections})
    if(header MATCHES "#${section}\n[^\n]*\n[^\n]*\n +([0-9A-F]+) virtual address")
      math(EXPR address "0x${CMAKE_MATCH_1} + ${offset}")
      if(address EQUAL rva_value)
        set(pdb_name ${name})
      endif()
    endif()
  endforeach()
endforeach()
if(NOT pdb_name STREQUAL function)
  message(FATAL_ERROR "the PDB names the export at RVA 0x${rva} '${pdb_name}', not ${function}")
endif()

# The DWARF beside it, found through the stripped DLL's debuglink.
execute_process(COMMAND ${OBJDUMP} -s -j .gnu_debuglink ${BIN}/tarnix-rmi.dll OUTPUT_VARIABLE link)
if(NOT link MATCHES "tarnix-rmi.debu")
  message(FATAL_ERROR "tarnix-rmi.dll names no tarnix-rmi.debug:\n${link}")
endif()
math(EXPR address "0x${image_base} + ${rva_value}" OUTPUT_FORMAT HEXADECIMAL)
execute_process(COMMAND ${ADDR2LINE} -f -e ${BIN}/tarnix-rmi.debug ${address}
  OUTPUT_VARIABLE line)
if(NOT line MATCHES "^${function}\n[^\n]*RMICommManager\\.cpp:[0-9]+")
  message(FATAL_ERROR "tarnix-rmi.debug resolves ${address} to:\n${line}")
endif()
message("${export} at RVA 0x${rva}: ${pdb_name} in the PDB; ${line}")
