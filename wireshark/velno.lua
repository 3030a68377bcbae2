-- SPDX-License-Identifier: Apache-2.0
--
-- What registers and applications say to each other, in Wireshark and tshark 4.0: pairings, and with a key log the
-- commands behind them. docs/wire.md tells how it is installed and what it shows. This file is all there is to it.

-- BEGIN of what "velno_dissector_tables" writes from the protocol table
local messages = {}
for _, row in ipairs({
    {"FF8801", "FF8C01", "Message8801"},
    {"FF8802", "FF8C02", "Message8802"},
    {"FF8803", "FF8C03", "Message8803"},
    {"FF8804", "FF8C04", "Message8804"},
    {"FF8805", "FF8C05", "Message8805"},
    {"FF8806", "FF8C06", "Message8806"},
    {"FF8807", "FF8C07", "Message8807"},
    {"FF8808", "FF8C08", "Message8808"},
    {"FF8A60", "FF8E60", "PairingStart"},
    {"FF8A62", "FF8E62", "PairingKeyExchange"},
    {"FF8A63", "FF8E63", "PairingConfirm"},
    {"FF8A64", "FF8E64", "Message8A64"},
}) do
    local message = {request = row[1], response = row[2], name = row[3]}
    messages[row[1]], messages[row[2]] = message, message
end

local tags = {
    ["DF02"] = {name = "Group DF02", form = "bytes"},
    ["DF40"] = {name = "Group DF40", form = "bytes"},
    ["DF41"] = {name = "Group DF41", form = "bytes"},
    ["DF42"] = {name = "Group DF42", form = "bytes"},
    ["DF6F"] = {name = "Group DF6F", form = "bytes"},
    ["DF8204"] = {name = "Field DF8204", form = "bytes"},
    ["DF8208"] = {name = "Sequence number", form = "digits"},
    ["DF8209"] = {name = "Date", form = "digits"},
    ["DF820A"] = {name = "Time", form = "digits"},
    ["DF820B"] = {name = "Field DF820B", form = "bytes"},
    ["DF820D"] = {name = "Field DF820D", form = "bytes"},
    ["DF820E"] = {name = "Field DF820E", form = "bytes"},
    ["DF8210"] = {name = "Field DF8210", form = "bytes"},
    ["DF8211"] = {name = "Field DF8211", form = "bytes"},
    ["DFC001"] = {name = "Field DFC001", form = "bytes"},
    ["DFC002"] = {name = "Field DFC002", form = "bytes"},
    ["DFC003"] = {name = "Field DFC003", form = "bytes"},
    ["DFC004"] = {name = "Field DFC004", form = "bytes"},
    ["DFC005"] = {name = "Field DFC005", form = "bytes"},
    ["DFC006"] = {name = "Field DFC006", form = "bytes"},
    ["DFC007"] = {name = "Field DFC007", form = "bytes"},
    ["DFC008"] = {name = "Field DFC008", form = "bytes"},
    ["DFC009"] = {name = "Field DFC009", form = "bytes"},
    ["DFC00A"] = {name = "Field DFC00A", form = "bytes"},
    ["DFC00B"] = {name = "Field DFC00B", form = "bytes"},
    ["DFC00C"] = {name = "Field DFC00C", form = "bytes"},
    ["DFC00D"] = {name = "Field DFC00D", form = "bytes"},
    ["DFC00E"] = {name = "Field DFC00E", form = "bytes"},
    ["DFC00F"] = {name = "Field DFC00F", form = "bytes"},
    ["DFC010"] = {name = "Field DFC010", form = "bytes"},
    ["DFC011"] = {name = "Field DFC011", form = "bytes"},
    ["DFC101"] = {name = "Field DFC101", form = "bytes"},
    ["DFC102"] = {name = "Field DFC102", form = "bytes"},
    ["DFC103"] = {name = "Field DFC103", form = "bytes"},
    ["DFC104"] = {name = "Field DFC104", form = "bytes"},
    ["DFC105"] = {name = "Field DFC105", form = "bytes"},
    ["DFC106"] = {name = "Field DFC106", form = "bytes"},
    ["DFC107"] = {name = "Application's vendor", form = "text"},
    ["DFC108"] = {name = "Application's model", form = "text"},
    ["DFC109"] = {name = "Application's identity", form = "text"},
    ["DFC10A"] = {name = "Register's brand", form = "text"},
    ["DFC10B"] = {name = "Register's model", form = "text"},
    ["DFC10C"] = {name = "Register's serial number", form = "text"},
    ["DFC10D"] = {name = "Application's random", form = "bytes"},
    ["DFC10E"] = {name = "Register's random", form = "bytes"},
    ["DFC111"] = {name = "Field DFC111", form = "bytes"},
    ["DFC112"] = {name = "Field DFC112", form = "bytes"},
    ["DFC113"] = {name = "Field DFC113", form = "bytes"},
    ["DFC114"] = {name = "Field DFC114", form = "bytes"},
    ["DFC115"] = {name = "Field DFC115", form = "bytes"},
    ["DFC116"] = {name = "Field DFC116", form = "bytes"},
    ["DFC117"] = {name = "Field DFC117", form = "bytes"},
    ["DFC118"] = {name = "Field DFC118", form = "bytes"},
    ["DFC119"] = {name = "Field DFC119", form = "bytes"},
    ["DFC201"] = {name = "Field DFC201", form = "bytes"},
    ["DFC202"] = {name = "Field DFC202", form = "bytes"},
    ["DFC203"] = {name = "Field DFC203", form = "bytes"},
    ["DFC204"] = {name = "Field DFC204", form = "bytes"},
    ["DFC205"] = {name = "Field DFC205", form = "bytes"},
    ["DFC206"] = {name = "Field DFC206", form = "bytes"},
    ["DFC207"] = {name = "Field DFC207", form = "bytes"},
    ["DFC208"] = {name = "Field DFC208", form = "bytes"},
    ["DFC209"] = {name = "Field DFC209", form = "bytes"},
    ["DFC20A"] = {name = "Field DFC20A", form = "bytes"},
    ["DFC20B"] = {name = "Field DFC20B", form = "bytes"},
    ["DFC210"] = {name = "Field DFC210", form = "bytes"},
    ["DFC212"] = {name = "Field DFC212", form = "bytes"},
    ["DFC213"] = {name = "Field DFC213", form = "bytes"},
    ["DFEF01"] = {name = "Register's certificate", form = "text"},
    ["DFEF02"] = {name = "Pairing number", form = "digits"},
    ["DFEF03"] = {name = "Diffie-Hellman public key", form = "bytes"},
    ["DFEF04"] = {name = "Field DFEF04", form = "bytes"},
    ["DFEF06"] = {name = "Result code", form = "text"},
    ["DFEF07"] = {name = "Field DFEF07", form = "bytes"},
    ["DFEF09"] = {name = "Pairing index", form = "bytes"},
    ["DFEF0A"] = {name = "Signature of the public key", form = "bytes"},
    ["DFEF0B"] = {name = "Protocol version", form = "text"},
    ["DFEF0C"] = {name = "Diffie-Hellman prime", form = "bytes"},
    ["DFEF0D"] = {name = "Diffie-Hellman generator", form = "bytes"},
    ["DFEF0E"] = {name = "Key check value", form = "bytes"},
    ["DFE002"] = {name = "Encrypted command", form = "bytes"},
    ["DFE003"] = {name = "MAC of the encrypted command", form = "bytes"},
    ["DFE004"] = {name = "Encrypted application hash", form = "bytes"},
    ["DFE005"] = {name = "Keys absent", form = "text"},
}

local commands = {
    [0] = {
        name = "state",
        request = {},
        answer = {
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32", presence = "sale-open"},
        },
    },
    [1] = {
        name = "login",
        request = {},
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [2] = {
        name = "logout",
        request = {},
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [3] = {
        name = "change-state",
        request = {
            {name = "state", type = "int32"},
            {name = "step", type = "int32"},
            {name = "extra", type = "int32"},
            {name = "keys", type = "numbers", least = 0, most = 64},
            {name = "answer-wanted", type = "flag"},
        },
        answer = {
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32", presence = "sale-open"},
        },
    },
    [4] = {
        name = "item",
        request = {
            {name = "price", type = "int64"},
            {name = "quantity", type = "int32"},
            {name = "percentage", type = "int32"},
            {name = "amount", type = "int64"},
            {name = "section", type = "int8"},
            {name = "name", type = "bytes"},
            {name = "type", type = "int32"},
        },
        answer = {
            {name = "accepted", type = "flag"},
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32"},
            {name = "totals", type = "record", parts = {
                {name = "total", type = "int64"},
                {name = "tax", type = "int64"},
                {name = "cash", type = "int64"},
                {name = "card", type = "int64"},
                {name = "change", type = "int64"},
                {name = "items", type = "int32"},
            }},
        },
    },
    [5] = {
        name = "delete",
        request = {
            {name = "index", type = "int32", presence = "more-follows"},
        },
        answer = {
            {name = "accepted", type = "flag"},
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32"},
            {name = "totals", type = "record", parts = {
                {name = "total", type = "int64"},
                {name = "tax", type = "int64"},
                {name = "cash", type = "int64"},
                {name = "card", type = "int64"},
                {name = "change", type = "int64"},
                {name = "items", type = "int32"},
            }},
        },
    },
    [6] = {
        name = "sale-state",
        request = {},
        answer = {
            {name = "accepted", type = "flag"},
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32"},
            {name = "totals", type = "record", parts = {
                {name = "total", type = "int64"},
                {name = "tax", type = "int64"},
                {name = "cash", type = "int64"},
                {name = "card", type = "int64"},
                {name = "change", type = "int64"},
                {name = "items", type = "int32"},
            }},
            {name = "receipt", type = "record", parts = {
                {name = "z", type = "int32"},
                {name = "receipt", type = "int32"},
            }},
        },
    },
    [7] = {
        name = "receipt",
        request = {
            {name = "z", type = "int32"},
            {name = "receipt", type = "int32"},
        },
        answer = {
            {name = "accepted", type = "flag"},
            {name = "totals", type = "record", parts = {
                {name = "total", type = "int64"},
                {name = "tax", type = "int64"},
                {name = "cash", type = "int64"},
                {name = "card", type = "int64"},
                {name = "change", type = "int64"},
                {name = "items", type = "int32"},
            }},
        },
    },
    [8] = {
        name = "paper",
        request = {},
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [9] = {
        name = "medical",
        request = {
            {name = "amount", type = "int64"},
            {name = "identity", type = "int64", presence = "not-zero"},
        },
        answer = {
            {name = "accepted", type = "flag"},
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32"},
        },
    },
    [10] = {
        name = "section",
        request = {
            {name = "section", type = "int8"},
        },
        answer = {
            {name = "name", type = "bytes"},
            {name = "tax-rate", type = "int32"},
        },
    },
    [11] = {
        name = "report",
        request = {
            {name = "z-report", type = "flag"},
        },
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [12] = {
        name = "z",
        request = {},
        answer = {
            {name = "accepted", type = "flag"},
            {name = "z", type = "int32"},
        },
    },
    [13] = {
        name = "print",
        request = {
            {name = "with-head", type = "flag"},
            {name = "lines", type = "lines"},
        },
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [14] = {
        name = "end-invoice",
        request = {
            {name = "type", type = "int32"},
            {name = "id-kind", type = "int32"},
            {name = "reference", type = "bytes"},
            {name = "id-number", type = "bytes"},
            {name = "mode", type = "int32"},
            {name = "delivers", type = "flag"},
        },
        answer = {
            {name = "accepted", type = "flag"},
        },
    },
    [15] = {
        name = "sale-limit",
        request = {},
        answer = {
            {name = "limit", type = "int64"},
        },
    },
    [16] = {
        name = "items",
        request = {
            {name = "items", type = "records", least = 1, most = 10, parts = {
                {name = "price", type = "int64"},
                {name = "quantity", type = "int32"},
                {name = "percentage", type = "int32"},
                {name = "amount", type = "int64"},
                {name = "section", type = "int8"},
                {name = "name", type = "bytes"},
                {name = "type", type = "int32"},
            }},
        },
        answer = {
            {name = "accepted", type = "flag"},
            {name = "state", type = "int32"},
            {name = "display", type = "numbers"},
            {name = "error", type = "int32"},
            {name = "totals", type = "record", parts = {
                {name = "total", type = "int64"},
                {name = "tax", type = "int64"},
                {name = "cash", type = "int64"},
                {name = "card", type = "int64"},
                {name = "change", type = "int64"},
                {name = "items", type = "int32"},
            }},
        },
    },
    [17] = {
        name = "last-z",
        request = {},
        answer = {
            {name = "time", type = "int32"},
        },
    },
    [18] = {
        name = "datetime",
        request = {},
        answer = {
            {name = "time", type = "int32"},
        },
    },
    [19] = {
        name = "acquirers",
        request = {},
        answer = {
            {name = "acquirers", type = "numbers"},
        },
    },
    [20] = {
        name = "sale-acquirers",
        request = {},
        answer = {
            {name = "acquirers", type = "numbers"},
        },
    },
}
-- END of what "velno_dissector_tables" writes

local band, bxor, bnot, rshift, ror = bit.band, bit.bxor, bit.bnot, bit.rshift, bit.ror

-- Bytes -----------------------------------------------------------------------------------------------------------

local function from_hex(digits)
    return (digits:gsub("%x%x", function(pair) return string.char(tonumber(pair, 16)) end))
end

local function to_hex(text)
    return (text:gsub(".", function(byte) return ("%02X"):format(byte:byte()) end))
end

local function xor_bytes(one, other)
    local result = {}
    for i = 1, #one do
        result[i] = string.char(bxor(one:byte(i), other:byte(i)))
    end
    return table.concat(result)
end

-- A number as so many bytes, the most significant first.
local function number_bytes(number, size)
    local result = {}
    for i = size, 1, -1 do
        result[i] = string.char(number % 256)
        number = math.floor(number / 256)
    end
    return table.concat(result)
end

local function is_printable(text)
    return not text:find("[^ -~]")
end

-- CRC-16/X.25, bit by bit: "123456789" gives 906E.
local function crc16(text)
    local crc = 0xFFFF
    for i = 1, #text do
        crc = bxor(crc, text:byte(i))
        for _ = 1, 8 do
            crc = bxor(rshift(crc, 1), band(crc, 1) * 0x8408)
        end
    end
    return bxor(crc, 0xFFFF)
end

-- SHA-256 and HMAC (FIPS 180-4, RFC 2104) -------------------------------------------------------------------------

-- Its constants are the fractions of roots of the first primes.
local sha_start, sha_rounds = {}, {}
do
    local function fraction(number)
        return math.floor(number % 1 * 2 ^ 32)
    end
    local candidate = 2
    while #sha_rounds < 64 do
        local is_prime = true
        for divisor = 2, candidate - 1 do
            is_prime = is_prime and candidate % divisor ~= 0
        end
        if is_prime then
            sha_rounds[#sha_rounds + 1] = fraction(candidate ^ (1 / 3))
            if #sha_start < 8 then
                sha_start[#sha_start + 1] = fraction(candidate ^ 0.5)
            end
        end
        candidate = candidate + 1
    end
end

-- The 64 words that a block of 64 bytes becomes.
local function sha_words(text, position)
    local w = {}
    for i = 1, 16 do
        local a, b, c, d = text:byte(position + i * 4 - 4, position + i * 4 - 1)
        w[i] = ((a * 256 + b) * 256 + c) * 256 + d
    end
    for i = 17, 64 do
        local x, y = w[i - 15], w[i - 2]
        w[i] = (w[i - 16] + bxor(ror(x, 7), ror(x, 18), rshift(x, 3)) + w[i - 7] +
            bxor(ror(y, 17), ror(y, 19), rshift(y, 10))) % 2 ^ 32
    end
    return w
end

local function sha_block(state, w)
    local a, b, c, d, e, f, g, h = table.unpack(state)
    for i = 1, 64 do
        local t1 = h + bxor(ror(e, 6), ror(e, 11), ror(e, 25)) + bxor(band(e, f), band(bnot(e), g)) +
            sha_rounds[i] + w[i]
        local t2 = bxor(ror(a, 2), ror(a, 13), ror(a, 22)) + bxor(band(a, b), band(a, c), band(b, c))
        h, g, f, e, d, c, b, a = g, f, e, (d + t1) % 2 ^ 32, c, b, a, (t1 + t2) % 2 ^ 32
    end
    local added = {a, b, c, d, e, f, g, h}
    for i = 1, 8 do
        state[i] = (state[i] + added[i]) % 2 ^ 32
    end
end

local function sha256(text)
    local state = {table.unpack(sha_start)}
    local padded = text .. "\128" .. ("\0"):rep((55 - #text) % 64) .. number_bytes(#text * 8, 8)
    for position = 1, #padded, 64 do
        sha_block(state, sha_words(padded, position))
    end
    for i = 1, 8 do
        state[i] = number_bytes(state[i], 4)
    end
    return table.concat(state)
end

-- With a key of at most 64 bytes.
local function hmac_sha256(key, text)
    local block = key .. ("\0"):rep(64 - #key)
    local function masked(mask)
        return (block:gsub(".", function(byte) return string.char(bxor(byte:byte(), mask)) end))
    end
    return sha256(masked(0x5C) .. sha256(masked(0x36) .. text))
end

-- AES-256-CBC, decryption (FIPS 197) ------------------------------------------------------------------------------

local aes_exp, aes_log, aes_box, aes_unbox = {}, {}, {}, {}
do
    local power = 1
    for i = 0, 254 do
        aes_exp[i] = power
        aes_log[power] = i
        power = bxor(power, power * 2, power >= 128 and 0x11B or 0) -- by 3, which generates the field
    end
    for byte = 0, 255 do
        local inverse = byte == 0 and 0 or aes_exp[(255 - aes_log[byte]) % 255]
        local twice = inverse * 257 -- rotating is shifting this
        local boxed = band(bxor(inverse, rshift(twice, 7), rshift(twice, 6), rshift(twice, 5), rshift(twice, 4),
            0x63), 0xFF)
        aes_box[byte] = boxed
        aes_unbox[boxed] = byte
    end
end

local function aes_product(byte, factor)
    return byte == 0 and 0 or aes_exp[(aes_log[byte] + aes_log[factor]) % 255]
end

-- The bytes of the 15 round keys of a key of 32 bytes, from index 0 on.
local function aes_round_keys(key)
    local keys = {}
    for i = 0, 31 do
        keys[i] = key:byte(i + 1)
    end
    local round_constant = 1
    for i = 32, 239, 4 do
        local word = {keys[i - 4], keys[i - 3], keys[i - 2], keys[i - 1]}
        if i % 32 == 0 then
            word = {bxor(aes_box[word[2]], round_constant), aes_box[word[3]], aes_box[word[4]], aes_box[word[1]]}
            round_constant = aes_product(round_constant, 2)
        elseif i % 32 == 16 then
            word = {aes_box[word[1]], aes_box[word[2]], aes_box[word[3]], aes_box[word[4]]}
        end
        for j = 0, 3 do
            keys[i + j] = bxor(keys[i + j - 32], word[j + 1])
        end
    end
    return keys
end

local function aes_unmix_column(state, first)
    local a, b, c, d = state[first], state[first + 1], state[first + 2], state[first + 3]
    local times = aes_product
    state[first] = bxor(times(a, 14), times(b, 11), times(c, 13), times(d, 9))
    state[first + 1] = bxor(times(a, 9), times(b, 14), times(c, 11), times(d, 13))
    state[first + 2] = bxor(times(a, 13), times(b, 9), times(c, 14), times(d, 11))
    state[first + 3] = bxor(times(a, 11), times(b, 13), times(c, 9), times(d, 14))
end

local function aes_decrypt_block(keys, block)
    local state = {}
    for i = 0, 15 do
        state[i] = bxor(block:byte(i + 1), keys[224 + i])
    end
    for round = 13, 0, -1 do
        local moved = {}
        for i = 0, 15 do -- a byte of row i % 4 comes from so many columns to the left
            moved[i] = bxor(aes_unbox[state[(i - i % 4 * 4) % 16]], keys[round * 16 + i])
        end
        state = moved
        for first = 0, round > 0 and 12 or -1, 4 do
            aes_unmix_column(state, first)
        end
    end
    return string.char(state[0], table.unpack(state))
end

-- Whole blocks of 16 bytes; padding is left where it is.
local function aes_cbc_decrypt(key, iv, text)
    local keys = aes_round_keys(key)
    local blocks = {}
    for position = 1, #text, 16 do
        local block = text:sub(position, position + 15)
        blocks[#blocks + 1] = xor_bytes(aes_decrypt_block(keys, block), iv)
        iv = block
    end
    return table.concat(blocks)
end

-- The keys of pairings --------------------------------------------------------------------------------------------

local key_log = {of = {}, path = "", size = 0, problem = nil}

-- VELNO_KEYS, name in 12 characters, both randoms, AES key, HMAC key; other lines mean nothing.
local function take_key_line(line)
    local form = "^VELNO_KEYS (............) (%x+) (%x+) (%x+) (%x+)%s*$"
    local identity, application, register, aes, hmac = line:match(form)
    if not identity or #application ~= 32 or #register ~= 32 or #aes ~= 64 or #hmac ~= 64 then
        return
    end
    local keys = {
        randoms = (application .. register):upper(),
        iv = xor_bytes(from_hex(application), from_hex(register)),
        aes = from_hex(aes),
        hmac = from_hex(hmac),
    }
    key_log.of[identity] = key_log.of[identity] or {}
    table.insert(key_log.of[identity], 1, keys) -- the newest first
end

-- Reads the file unless it is the one that was read last: it grows while registers pair.
local function read_key_log(path)
    if path == "" then
        key_log = {of = {}, path = path, size = 0, problem = "no key log is set"}
        return
    end
    local longest = 16 * 1024 * 1024
    local file, reason = io.open(path, "rb")
    local size = file and file:seek("end")
    if not size or path == key_log.path and size == key_log.size then
        key_log.problem = not size and ("the key log cannot be read: " .. (reason or path)) or key_log.problem
    else
        file:seek("set")
        local text = file:read(math.min(size, longest))
        key_log = {of = {}, path = path, size = size, problem = not text and "the key log is empty or no file" or nil}
        for line in (text or ""):gmatch("[^\r\n]+") do
            take_key_line(line)
        end
    end
    if file then
        file:close()
    end
end

-- Those of a register under which a ciphertext has this MAC, of the connection's own first.
local function keys_for(identity, cipher, mac, known)
    if known and hmac_sha256(known.hmac, cipher) == mac then
        return known
    end
    for _, keys in ipairs(key_log.of[identity] or {}) do
        if hmac_sha256(keys.hmac, cipher) == mac then
            return keys
        end
    end
end

-- Without the bytes in front that fill blocks of 32, each of which says how many there are; nil when there is nothing.
local function without_padding(padded)
    local count = padded:byte(1) or 0
    if #padded == 0 or #padded % 32 ~= 0 or count < 128 and count >= #padded then
        return nil
    end
    return padded:sub(count < 128 and count + 1 or 1)
end

local function decrypted(keys, cipher, iv)
    if #cipher == 0 or #cipher % 32 ~= 0 then
        return nil
    end
    return without_padding(aes_cbc_decrypt(keys.aes, iv, cipher))
end

-- Fields ----------------------------------------------------------------------------------------------------------

local velno = Proto("velno", "GMP3 of fiscal cash registers")
velno.prefs.key_log = Pref.string("Key log", "", "The file of velno-register --key-log or VELNO_KEY_LOG")

local fields = {
    payload_length = ProtoField.uint32("velno.payload_length", "Length of the payload", base.DEC),
    keep_alive = ProtoField.bytes("velno.keep_alive", "Keep-alive"),
    greeting = ProtoField.string("velno.greeting", "Name of the register, for the relay"),
    length = ProtoField.uint16("velno.length", "Length", base.DEC),
    identity = ProtoField.string("velno.identity", "Register"),
    crc = ProtoField.uint16("velno.crc", "CRC", base.HEX),
    message = ProtoField.string("velno.message", "Message"),
    side = ProtoField.string("velno.side", "Said as"),
    element = ProtoField.bytes("velno.element", "Element"),
    command = ProtoField.string("velno.command", "Command"),
    code = ProtoField.int32("velno.command.code", "Code", base.DEC),
    plaintext = ProtoField.bytes("velno.plaintext", "Plaintext"),
    application_hash = ProtoField.bytes("velno.application_hash", "Application hash"),
    left_over = ProtoField.bytes("velno.left_over", "Bytes that belong to nothing"),
    request_in = ProtoField.framenum("velno.request_in", "Request in frame", base.NONE, frametype.REQUEST),
    answer_in = ProtoField.framenum("velno.answer_in", "Answer in frame", base.NONE, frametype.RESPONSE),
    time = ProtoField.relative_time("velno.response_time", "Time since the request"),
}

local notes = {
    crc = ProtoExpert.new("velno.crc.wrong", "Wrong CRC", expert.group.CHECKSUM, expert.severity.ERROR),
    mac = ProtoExpert.new("velno.mac.wrong", "Wrong MAC: other keys, or changed on the way", expert.group.SECURITY,
        expert.severity.ERROR),
    no_keys = ProtoExpert.new("velno.no_keys", "Not decrypted", expert.group.DECRYPTION, expert.severity.NOTE),
    nothing = ProtoExpert.new("velno.nothing_decrypted", "The MAC is right, but it decrypts to nothing",
        expert.group.DECRYPTION, expert.severity.ERROR),
    malformed = ProtoExpert.new("velno.malformed", "Malformed", expert.group.MALFORMED, expert.severity.ERROR),
    refused = ProtoExpert.new("velno.refused", "The register refuses the pairing", expert.group.RESPONSE_CODE,
        expert.severity.WARN),
    keys_absent = ProtoExpert.new("velno.keys_absent", "The application holds no keys: the register forgets its own",
        expert.group.SEQUENCE, expert.severity.NOTE),
}

local tag_fields, item_fields, record_fields = {}, {}, {}

local function last_part(name)
    return (name:lower():gsub("'", ""):gsub("[^%w]+", "_"))
end

local function make_field(abbreviation, name, form)
    return form == "bytes" and ProtoField.bytes(abbreviation, name) or ProtoField.string(abbreviation, name)
end

local function make_item_fields(rows)
    for _, row in ipairs(rows) do
        local abbreviation = "velno.item." .. last_part(row.name)
        if row.parts then
            record_fields[row] = ProtoField.none("velno.record." .. last_part(row.name), row.name)
            make_item_fields(row.parts)
        elseif row.type == "flag" then
            item_fields[row] = ProtoField.bool(abbreviation, row.name)
        elseif row.type == "bytes" or row.type == "lines" then
            item_fields[row] = ProtoField.string(abbreviation, row.name)
        else
            item_fields[row] = ProtoField.int64(abbreviation, row.name, base.DEC)
        end
    end
end

do
    for tag, row in pairs(tags) do
        tag_fields[tag] = make_field("velno." .. last_part(row.name), row.name, row.form)
    end
    for _, command in pairs(commands) do
        make_item_fields(command.request)
        make_item_fields(command.answer)
    end
    local all = {}
    for _, kind in ipairs({fields, tag_fields, item_fields, record_fields}) do
        for _, field in pairs(kind) do
            all[#all + 1] = field
        end
    end
    velno.fields = all
    local experts = {}
    for _, note in pairs(notes) do
        experts[#experts + 1] = note
    end
    velno.experts = experts
end

-- Conversations ---------------------------------------------------------------------------------------------------

local stream_number = Field.new("tcp.stream")
local streams = {} -- of TCP: what is known of each connection
local said = {} -- what was said where, found out when it was seen first

function velno.init()
    streams, said = {}, {}
    key_log = {of = {}, path = "", size = 0}
    read_key_log(velno.prefs.key_log)
end

local function stream_of()
    local number = stream_number()
    local key = number and number.value or -1
    streams[key] = streams[key] or {}
    return streams[key]
end

-- What is remembered of the frame at this place; is_new the first time.
local function memory_of(pinfo, range)
    local place = pinfo.number .. "/" .. range:offset() .. "/" .. range:len()
    local memory = said[place]
    if not memory or not pinfo.visited then
        memory = {is_new = true, number = pinfo.number, time = pinfo.rel_ts}
        said[place] = memory
    else
        memory.is_new = false
    end
    return memory
end

local function source_of(pinfo)
    return tostring(pinfo.src) .. ":" .. pinfo.src_port
end

-- One request is under way on a connection: an answer belongs to the last one.
local function match(memory, stream, is_answer)
    if not memory.is_new then
        return
    end
    memory.side = is_answer and "answer" or "request"
    if not is_answer then
        stream.request = memory
    elseif stream.request then
        memory.request = stream.request
        stream.request.answer = memory
        stream.request = nil
    end
end

local function show_match(memory, tree)
    tree:add(fields.side, memory.side):set_generated()
    if memory.answer then
        tree:add(fields.answer_in, memory.answer.number):set_generated()
    end
    if memory.request then
        tree:add(fields.request_in, memory.request.number):set_generated()
        local seconds = memory.time - memory.request.time
        local whole = math.floor(seconds)
        tree:add(fields.time, NSTime.new(whole, math.floor((seconds - whole) * 1e9 + 0.5))):set_generated()
    end
end

local function say(pinfo, text)
    local before = tostring(pinfo.cols.info)
    pinfo.cols.info = pinfo.private.velno_said and before .. ", " .. text or text
    pinfo.private.velno_said = "yes"
end

-- Elements --------------------------------------------------------------------------------------------------------

-- The tag at the front: at most 4 bytes, all but the last with bit 7 set.
local function tag_size(range)
    local size = 1
    while size < math.min(range:len(), 4) and range(size - 1, 1):uint() >= 128 do
        size = size + 1
    end
    return size
end

-- How many bytes the length field has, and what it says; nil when it is none.
local function element_length(range, at)
    if at == range:len() then
        return 0, 0
    end
    local first = range(at, 1):uint()
    local more = first - 128
    if first < 128 then
        return 1, first
    elseif (more ~= 1 and more ~= 2) or range:len() - at - 1 < more then
        return nil
    end
    local length = range(at + 1, more):uint()
    if length == 0 then
        return nil
    end
    return 1 + more, length
end

-- The elements of a range, in order, and how many bytes they take: less than all when one is wrong or cut short.
local function elements_of(range)
    local elements, at = {}, 0
    while at < range:len() do
        local rest = range(at)
        local tag = tag_size(rest)
        local field, length = element_length(rest, tag)
        if not field or length > rest:len() - tag - field then
            break
        end
        local size = tag + field + length
        elements[#elements + 1] = {
            tag = to_hex(rest(0, tag):raw()),
            whole = rest(0, size),
            value = length > 0 and rest(tag + field, length) or nil,
        }
        at = at + size
    end
    return elements, at
end

local function dissect_certificate(range, pinfo, tree)
    local body = range:raw():match("%-%-%-%-%-BEGIN CERTIFICATE%-%-%-%-%-(.-)%-%-%-%-%-END CERTIFICATE%-%-%-%-%-")
    local der = ByteArray.new((body or ""):gsub("%s", ""), true):base64_decode()
    local x509 = DissectorTable.get("ber.syntax"):get_dissector("Certificate")
    if der:len() == 0 or not x509 then
        tree:add_proto_expert_info(notes.malformed, "No certificate in PEM")
        return
    end
    local before = tostring(pinfo.cols.info)
    local ok = pcall(x509.call, x509, der:tvb("Certificate"), pinfo, tree)
    pinfo.cols.info = before
    if not ok then
        tree:add_proto_expert_info(notes.malformed, "The certificate cannot be read")
    end
end

-- Adds an element under the name of its tag.
local function add_element(element, tree)
    local row = tags[element.tag]
    if not row or not element.value then
        local name = row and row.name or "Element " .. element.tag
        local item = tree:add(fields.element, element.whole)
        item:set_text(element.value and name .. ": " .. to_hex(element.value:raw()) or name .. ": nothing")
        return item
    elseif row.form == "text" then
        return tree:add_packet_field(tag_fields[element.tag], element.value, ENC_UTF_8)
    elseif row.form == "digits" then
        return tree:add(tag_fields[element.tag], element.value, to_hex(element.value:raw()))
    end
    return tree:add(tag_fields[element.tag], element.value)
end

local function add_left_over(range, tree, text)
    tree:add(fields.left_over, range):add_proto_expert_info(notes.malformed, text)
end

-- Pairings --------------------------------------------------------------------------------------------------------

local pem = "DFEF01"
local application_random, register_random = "DFC10D", "DFC10E"
local check_value, encrypted_hash, result_code = "DFEF0E", "DFE004", "DFEF06"

-- The hash travels under the new keys, with the end of the check value as IV.
local function add_application_hash(found, identity, stream, tree)
    local cipher, check = found[encrypted_hash], found[check_value]
    local randoms = to_hex((stream[application_random] or "") .. (stream[register_random] or ""))
    for _, keys in ipairs(key_log.of[identity] or {}) do
        if cipher and check and #check == 32 and keys.randoms == randoms then
            local hash = decrypted(keys, cipher, check:sub(17))
            local bytes = hash and ByteArray.new(hash, true)
            return bytes and tree:add(fields.application_hash, bytes:tvb("Application hash")()):set_generated()
        end
    end
end

local function dissect_message(element, message, identity, pinfo, tree)
    local stream, memory = stream_of(), memory_of(pinfo, element.whole)
    local is_answer = message.response == element.tag
    match(memory, stream, is_answer)
    if not is_answer then
        stream.application = source_of(pinfo)
    end
    say(pinfo, message.name .. " " .. memory.side)
    local branch = tree:add(fields.message, element.whole, message.name)
    branch:append_text(" " .. memory.side)
    show_match(memory, branch)
    local inner, taken = {}, 0
    if element.value then
        inner, taken = elements_of(element.value)
    end
    local found = {}
    for _, field in ipairs(inner) do
        local item = add_element(field, branch)
        local value = field.value and field.value:raw() or ""
        found[field.tag] = value
        if field.tag == pem and field.value then
            dissect_certificate(field.value, pinfo, item)
        elseif field.tag == result_code and value ~= "00" then
            item:add_proto_expert_info(notes.refused)
        end
    end
    if element.value and taken < element.value:len() then
        add_left_over(element.value(taken), branch, "A field is wrong or cut short")
    end
    stream[application_random] = found[application_random] or stream[application_random]
    stream[register_random] = found[register_random] or stream[register_random]
    add_application_hash(found, identity, stream, branch)
end

-- Items of commands -----------------------------------------------------------------------------------------------

local sizes = {flag = 1, int8 = 1, int16 = 2, int32 = 4, int64 = 8}
local take_items

-- The next bytes of a run {tvb, at, end}; nil when there are not as many.
local function take(run, size)
    if size > run.stop - run.at then
        return nil
    end
    local range = run.tvb(run.at, size)
    run.at = run.at + size
    return range
end

-- A byte string with its size in front. Returns nil when it is cut short; without a range when it is empty.
local function take_bytes(run)
    local size = take(run, 4)
    local count = size and size:uint()
    if not count then
        return nil
    elseif count == 0xFFFFFFFF or count == 0 then
        return size, nil
    end
    local range = take(run, count)
    if not range then
        return nil
    end
    return size, range
end

local function take_numbers(row, run, tree)
    local size = take(run, 4)
    local count = size and size:uint()
    if not count or count > (run.stop - run.at) / 4 or count < (row.least or 0) or count > (row.most or count) then
        return false
    end
    if count == 0 then
        tree:add(size, row.name .. ": none")
    end
    for _ = 1, count do
        tree:add(item_fields[row], take(run, 4))
    end
    return true
end

local function add_text(row, size, range, tree)
    if range then
        tree:add_packet_field(item_fields[row], range, ENC_UTF_8)
    else
        tree:add(item_fields[row], size, "")
    end
end

local function take_lines(row, run, tree)
    local size, range = take_bytes(run)
    local inside = range and {tvb = run.tvb, at = run.at - range:len(), stop = run.at}
    local number = inside and take(inside, 4)
    if not number then
        return false
    end
    for _ = 1, number:uint() do
        local line_size, line = take_bytes(inside)
        if not line_size then
            return false
        end
        add_text(row, line_size, line, tree)
    end
    return inside.at == inside.stop
end

local function take_records(row, run, tree)
    local count = 1
    if row.type == "records" then
        local size = take(run, 2)
        count = size and size:int()
        if not count or count < (row.least or 0) or count > (row.most or count) then
            return false
        end
    end
    for _ = 1, count do
        local first = run.at
        local branch = tree:add(record_fields[row], run.tvb(first, 0))
        local ok = take_items(row.parts, run, branch)
        branch:set_len(run.at - first)
        if not ok then
            return false
        end
    end
    return true
end

-- Takes one item. Returns whether it is whole, and its value when it is a number.
local function take_item(row, run, tree)
    if row.type == "bytes" then
        local size, range = take_bytes(run)
        if size then
            add_text(row, size, range, tree)
        end
        return size ~= nil
    elseif row.type == "numbers" then
        return take_numbers(row, run, tree)
    elseif row.type == "lines" then
        return take_lines(row, run, tree)
    elseif row.parts then
        return take_records(row, run, tree)
    end
    local range = take(run, sizes[row.type])
    if not range then
        return false
    end
    tree:add(item_fields[row], range)
    return true, row.type == "int64" and range:int64():tonumber() or range:len() <= 4 and range:int()
end

local function is_expected(row, run, values)
    if row.presence == "more-follows" then
        return run.at < run.stop
    elseif row.presence == "not-zero" then
        return values.last ~= 0
    elseif row.presence == "sale-open" then
        return values.state == 5
    end
    return true
end

function take_items(rows, run, tree)
    local values = {}
    for _, row in ipairs(rows) do
        if is_expected(row, run, values) then
            local ok, value = take_item(row, run, tree)
            if not ok then
                return false
            end
            values.last = value
            values[row.name] = value
        end
    end
    return true
end

local function add_items(rows, run, tree)
    if not take_items(rows, run, tree) then
        tree:add_proto_expert_info(notes.malformed, "The items are cut short, or too many")
    elseif run.at < run.stop then
        add_left_over(run.tvb(run.at), tree, "More than the command's items")
    end
end

-- Commands --------------------------------------------------------------------------------------------------------

local cipher_tag, mac_tag, absent_tag = "DFE002", "DFE003", "DFE005"

local function dissect_request(tvb, memory, pinfo, tree)
    local run = {tvb = tvb, at = 0, stop = tvb:len()}
    local code = take(run, 4)
    if not code then
        add_left_over(tvb(), tree, "No command: it has less than 4 bytes")
        return
    end
    memory.command = commands[code:int()]
    local name = memory.command and memory.command.name or "unknown command"
    say(pinfo, name)
    tree:add(fields.command, code, name):append_text((" (%d)"):format(code:int()))
    tree:add(fields.code, code)
    if memory.command then
        add_items(memory.command.request, run, tree)
    end
end

local function dissect_answer(tvb, memory, pinfo, tree)
    local command = memory.request and memory.request.command
    say(pinfo, "answer to " .. (command and command.name or "an unknown command"))
    if not command then
        tree:add(fields.plaintext, tvb())
        return
    end
    tree:add(fields.command, command.name):set_generated()
    add_items(command.answer, {tvb = tvb, at = 0, stop = tvb:len()}, tree)
end

-- Why there is nothing to read in a frame whose MAC fits no keys.
local function explain_missing_keys(identity, item, mac_item)
    if key_log.of[identity] then
        mac_item:add_proto_expert_info(notes.mac)
    else
        item:add_proto_expert_info(notes.no_keys, key_log.problem or "The key log has no keys of this register")
    end
end

local function find_keys(memory, stream, identity, cipher, mac)
    if memory.is_new then
        memory.keys = keys_for(identity, cipher, mac, stream.keys)
        if not memory.keys then
            read_key_log(velno.prefs.key_log)
            memory.keys = keys_for(identity, cipher, mac)
        end
        stream.keys = memory.keys or stream.keys
    end
    return memory.keys
end

local function dissect_encrypted(frame, cipher, mac, identity, pinfo, tree)
    local stream, memory = stream_of(), memory_of(pinfo, frame)
    stream.application = stream.application or source_of(pinfo)
    match(memory, stream, source_of(pinfo) ~= stream.application)
    show_match(memory, tree)
    local keys = find_keys(memory, stream, identity, cipher.value:raw(), mac.value:raw())
    if not keys then
        say(pinfo, "encrypted " .. memory.side)
        explain_missing_keys(identity, cipher.item, mac.item)
        return
    end
    local plaintext = decrypted(keys, cipher.value:raw(), keys.iv)
    if not plaintext then
        say(pinfo, "encrypted " .. memory.side)
        cipher.item:add_proto_expert_info(notes.nothing)
        return
    end
    local tvb = ByteArray.new(plaintext, true):tvb("Decrypted")
    if memory.side == "request" then
        dissect_request(tvb, memory, pinfo, tree:add(velno, tvb(), "Decrypted request"))
    else
        dissect_answer(tvb, memory, pinfo, tree:add(velno, tvb(), "Decrypted answer"))
    end
end

-- Frames ----------------------------------------------------------------------------------------------------------

local smallest_frame = 16 -- length, name, CRC
local name_size = 12

local function dissect_body(frame, body, identity, pinfo, tree)
    local elements, taken = elements_of(body)
    local found = {}
    for _, element in ipairs(elements) do
        local message = messages[element.tag]
        if message then
            dissect_message(element, message, identity, pinfo, tree)
        else
            element.item = add_element(element, tree)
            found[element.tag] = element.value and element or found[element.tag]
        end
    end
    if taken < body:len() then
        add_left_over(body(taken), tree, "An element is wrong or cut short")
    end
    if found[cipher_tag] and found[mac_tag] then
        dissect_encrypted(frame, found[cipher_tag], found[mac_tag], identity, pinfo, tree)
    elseif found[absent_tag] then
        stream_of().application = source_of(pinfo)
        say(pinfo, "keys absent")
        found[absent_tag].item:add_proto_expert_info(notes.keys_absent)
    end
end

local function dissect_frame(frame, pinfo, tree)
    if frame:len() < smallest_frame then
        add_left_over(frame, tree, "No whole frame")
        return
    end
    local length = tree:add(fields.length, frame(0, 2))
    if frame(0, 2):uint() ~= frame:len() - 2 then
        local text = ("The frame has %d bytes behind its length"):format(frame:len() - 2)
        length:add_proto_expert_info(notes.malformed, text)
    end
    local identity = frame(2, name_size)
    tree:add_packet_field(fields.identity, identity, ENC_ASCII)
    local body = frame:len() - smallest_frame
    if body > 0 then
        dissect_body(frame, frame(2 + name_size, body), identity:raw(), pinfo, tree)
    end
    local crc = crc16(frame(2, frame:len() - 4):raw())
    local item = tree:add(fields.crc, frame(frame:len() - 2, 2))
    if crc == frame(frame:len() - 2, 2):uint() then
        item:append_text(" (right)")
    else
        item:add_proto_expert_info(notes.crc, ("Wrong CRC, it should be %04x"):format(crc))
    end
end

-- The stream ------------------------------------------------------------------------------------------------------

local prefix_size = 4 -- enough to know what comes, and how long it is
local longest_payload, longest_exchange = 65537, 4096

-- What begins with these bytes, and its size: a "payload" behind a length of 4 bytes, an "exchange" frame, a
-- "greeting" of the relay, or nothing that is known.
local function what_comes(range)
    local first = range(0, 2):uint()
    if first <= 1 then
        local size = range(0, 4):uint()
        return size <= longest_payload and "payload" or nil, 4 + size
    end
    local letters = range(0, 2):raw()
    if letters == "UB" or letters == "VE" then
        return "greeting", name_size
    end
    return first >= smallest_frame - 2 and first <= longest_exchange and "exchange" or nil, 2 + first
end

local function dissect_unit(kind, range, pinfo, tree)
    local branch = tree:add(velno, range)
    pinfo.cols.protocol = "GMP3"
    if kind == "greeting" then
        say(pinfo, "name for the relay")
        branch:add(fields.greeting, range)
    elseif kind == "exchange" then
        dissect_frame(range, pinfo, branch)
    else
        branch:add(fields.payload_length, range(0, 4))
        if range:len() == 8 and range(4, 4):uint() == 0xDEADBEEF then
            say(pinfo, "keep-alive")
            branch:add(fields.keep_alive, range(4, 4))
        elseif range:len() > 4 then
            dissect_frame(range(4), pinfo, branch)
        end
    end
end

local function dissect(tvb, pinfo, tree)
    local at = 0
    while at < tvb:len() do
        local rest = tvb(at)
        local kind, size
        if rest:len() >= prefix_size then
            kind, size = what_comes(rest)
            if not kind then
                add_left_over(rest, tree:add(velno, rest), "No frame of this protocol begins here")
                break
            end
        end
        if not size or size > rest:len() then
            if pinfo.can_desegment > 0 then
                pinfo.desegment_offset = at
                pinfo.desegment_len = size and size - rest:len() or DESEGMENT_ONE_MORE_SEGMENT
            else
                add_left_over(rest, tree:add(velno, rest), "Cut short")
            end
            break
        end
        dissect_unit(kind, rest(0, size), pinfo, tree)
        at = at + size
    end
    return tvb:len()
end

velno.dissector = dissect

-- Whether a connection begins, or goes on, with something that only this protocol says.
local function is_ours(tvb)
    if tvb:len() < prefix_size then
        return false
    end
    local kind, size = what_comes(tvb())
    if kind == "greeting" then
        return tvb:len() == name_size and is_printable(tvb:raw())
    elseif kind == "payload" then
        if size == 8 then
            return tvb:len() >= 8 and tvb(4, 4):uint() == 0xDEADBEEF
        end
        return tvb:len() >= 6 + name_size and tvb(4, 2):uint() == size - 6 and is_printable(tvb:raw(6, name_size))
    end
    return kind == "exchange" and tvb:len() >= 5 + name_size and is_printable(tvb:raw(2, name_size)) and
        tvb(2 + name_size, 1):uint() == 0xFF and band(tvb(3 + name_size, 1):uint(), 0xF8) == 0x88
end

velno:register_heuristic("tcp", function(tvb, pinfo, tree)
    if not is_ours(tvb) then
        return false
    end
    pinfo.conversation = velno
    dissect(tvb, pinfo, tree) -- called as a dissector it could not ask for more bytes
    return true
end)

DissectorTable.get("tcp.port"):add_for_decode_as(velno)

-- What a test calls by itself.
package.loaded.velno = {crc16 = crc16, sha256 = sha256, hmac_sha256 = hmac_sha256, aes_cbc_decrypt = aes_cbc_decrypt,
    from_hex = from_hex, to_hex = to_hex}
