-- SPDX-License-Identifier: Apache-2.0
-- The dissector's own cryptography against published figures, inside tshark: a line for each that is wrong, then
-- "checked".
local velno = require("velno")

local function check(name, found, expected)
    if found ~= expected:gsub("%s", "") then
        print("wrong: " .. name .. ": " .. found)
    end
end

local function hex(digits)
    return velno.from_hex((digits:gsub("%s", "")))
end

-- RFC 1662's frame check sequence, as ITU-T V.42 and X.25 have it.
check("CRC-16/X.25", ("%04X"):format(velno.crc16("123456789")), "906E")
check("CRC-16/X.25 of nothing", ("%04X"):format(velno.crc16("")), "0000")

-- FIPS 180-4, examples of NIST.
check("SHA-256 of nothing", velno.to_hex(velno.sha256("")),
    "E3B0C442 98FC1C14 9AFBF4C8 996FB924 27AE41E4 649B934C A495991B 7852B855")
check("SHA-256, one block", velno.to_hex(velno.sha256("abc")),
    "BA7816BF 8F01CFEA 414140DE 5DAE2223 B00361A3 96177A9C B410FF61 F20015AD")
check("SHA-256, two blocks", velno.to_hex(velno.sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
    "248D6A61 D20638B8 E5C02693 0C3E6039 A33CE459 64FF2167 F6ECEDD4 19DB06C1")
check("SHA-256, many blocks", velno.to_hex(velno.sha256(("a"):rep(10000))),
    "27DD1F61 B867B6A0 F6E9D8A4 1C43231D E52107E5 3AE424DE 8F847B82 1DB4B711")

-- RFC 4231, cases 1 to 4.
check("HMAC, case 1", velno.to_hex(velno.hmac_sha256(("\11"):rep(20), "Hi There")),
    "B0344C61D8DB38535CA8AFCEAF0BF12B 881DC200C9833DA726E9376C2E32CFF7")
check("HMAC, case 2", velno.to_hex(velno.hmac_sha256("Jefe", "what do ya want for nothing?")),
    "5BDCC146BF60754E6A042426089575C7 5A003F089D2739839DEC58B964EC3843")
check("HMAC, case 3", velno.to_hex(velno.hmac_sha256(("\170"):rep(20), ("\221"):rep(50))),
    "773EA91E36800E46854DB8EBD09181A7 2959098B3EF8C122D9635514CED565FE")
check("HMAC, case 4", velno.to_hex(velno.hmac_sha256(hex("0102030405060708090A0B0C0D0E0F10111213141516171819"),
    ("\205"):rep(50))), "82558A389A443C0EA4CC819899F2083A 85F0FAA3E578F8077A2E3FF46729665B")

-- FIPS 197, appendix C.3; SP 800-38A, F.2.6.
check("AES-256", velno.to_hex(velno.aes_cbc_decrypt(
    hex("000102030405060708090A0B0C0D0E0F101112131415161718191A1B1C1D1E1F"), ("\0"):rep(16),
    hex("8EA2B7CA516745BFEAFC49904B496089"))), "00112233445566778899AABBCCDDEEFF")
check("AES-256-CBC", velno.to_hex(velno.aes_cbc_decrypt(
    hex("603DEB1015CA71BE2B73AEF0857D7781 1F352C073B6108D72D9810A30914DFF4"), hex("000102030405060708090A0B0C0D0E0F"),
    hex([[F58C4C04D6E5F1BA779EABFB5F7BFBD6 9CFC4E967EDB808D679F777BC6702C7D
          39F23369A9D9BACFA530E26304231461 B2EB05E2C39BE9FCDA6C19078C6A9D1B]]))),
    [[6BC1BEE22E409F96E93D7E117393172A AE2D8A571E03AC9C9EB76FAC45AF8E51
      30C81C46A35CE411E5FBC1191A0A52EF F69F2445DF4F9B17AD2B417BE66C3710]])
print("checked")
