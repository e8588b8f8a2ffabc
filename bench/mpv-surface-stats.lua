-- For bench/surface-vs-mpv: after a second of warm-up, counts for `secs` seconds the frames mpv
-- showed (frames passed minus frames dropped), dropped, and the CPU time used, writes one JSON line to `out`, quits.
local options = { secs = 10, out = "" }
require("mp.options").read_options(options, "surface-stats")

-- CPU seconds of the whole process so far (user + system), from the kernel's count in ticks.
local function cpu()
    local file = io.open("/proc/self/stat")
    local stat = file:read("*a")
    file:close()
    local fields = {}
    for field in stat:gsub("^.*%) ", ""):gmatch("%S+") do fields[#fields + 1] = field end
    local ticks = tonumber(io.popen("getconf CLK_TCK"):read("*l")) or 100
    return (tonumber(fields[12]) + tonumber(fields[13])) / ticks
end

local function counters()
    return mp.get_property_number("estimated-frame-number", 0),
        mp.get_property_number("frame-drop-count", 0),
        mp.get_property_number("vo-drop-frame-count", 0)
end

mp.register_event("playback-restart", function()
    mp.unregister_event(nil)
    mp.add_timeout(1, function()
        local frame0, decoder0, output0 = counters()
        local cpu0 = cpu()
        mp.add_timeout(options.secs, function()
            local frame1, decoder1, output1 = counters()
            local cpu1 = cpu()
            local decoder, output = decoder1 - decoder0, output1 - output0
            local file = io.open(options.out, "w")
            file:write(string.format('{"fps":%.2f,"decoderDrops":%d,"outputDrops":%d,"cpu":%.3f}\n',
                (frame1 - frame0 - decoder - output) / options.secs, decoder, output, cpu1 - cpu0))
            file:close()
            mp.command("quit")
        end)
    end)
end)
