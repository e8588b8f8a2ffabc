#!/usr/bin/env bash
# Generates the media the engine and model tests play, once per build folder: make-test-media.sh DIR
set -euo pipefail
out=$1
data=$(cd "$(dirname "$0")/../data" && pwd)
# Made again whenever this script changes, so that a build folder gets media added later.
stamp=$(sha1sum "$0" | cut -d' ' -f1)
[ "$(cat "$out/.complete" 2>/dev/null)" = "$stamp" ] && exit 0
rm -rf "$out" && mkdir -p "$out/vod" "$out/live"
ff() { ffmpeg -hide_banner -loglevel error -y "$@"; }
video="-c:v libx264 -preset ultrafast -pix_fmt yuv420p -g 25 -keyint_min 25 -sc_threshold 0"
audio="-c:a aac -b:a 64k -ac 2 -ar 48000"

# 5 s of 16:9 picture and sound, a key frame every second.
ff -f lavfi -i testsrc2=size=320x180:rate=25:duration=5 -f lavfi -i sine=frequency=440:duration=5 \
    $video $audio -shortest "$out/clip.mp4"
ff -f lavfi -i sine=frequency=660:duration=3 $audio "$out/audio.m4a"
# Sound without a picture that plays on for as long as a test needs.
ff -f lavfi -i sine=frequency=330:duration=120 $audio "$out/long-audio.m4a"
# 4:3, with a space in its name (its address spells it %20).
ff -f lavfi -i testsrc2=size=320x240:rate=25:duration=2 $video "$out/My Film.mkv"
# HLS: a finished playlist of 1 s segments, and 40 live segments the test server publishes
# one per second as a sliding window.
ff -i "$out/clip.mp4" -c copy -f hls -hls_time 1 -hls_playlist_type vod \
    -hls_segment_filename "$out/vod/seg%d.ts" "$out/vod/index.m3u8"
ff -f lavfi -i testsrc2=size=160x90:rate=25:duration=40 -f lavfi -i sine=duration=40 \
    $video $audio -shortest -f hls -hls_time 1 -hls_list_size 0 \
    -hls_segment_filename "$out/live/seg%d.ts" "$out/live/all.m3u8"
# Almost 12 minutes of a tiny still picture, for seeks of minutes in both directions.
ff -f lavfi -i color=c=gray:size=32x32:rate=2:duration=700 -c:v libx264 -preset ultrafast \
    -pix_fmt yuv420p -g 10 "$out/long.mp4"
# 16:9 in three columns, red, green and blue, for checking where each part of the picture lands.
ff -f lavfi -i "color=c=red:size=640x360:rate=25:duration=10,drawbox=x=213:y=0:w=214:h=360:color=lime:t=fill,drawbox=x=427:y=0:w=213:h=360:color=blue:t=fill" \
    $video "$out/columns.mp4"
# The same with a white band along the top, for which way up the picture is drawn.
ff -f lavfi -i "color=c=red:size=640x360:rate=25:duration=10,drawbox=x=213:y=0:w=214:h=360:color=lime:t=fill,drawbox=x=427:y=0:w=213:h=360:color=blue:t=fill,drawbox=x=0:y=0:w=640:h=60:color=white:t=fill" \
    $video "$out/columns-top.mp4"
# Fine detail at 720p, for comparing where each pixel of the picture lands between two modes.
ff -f lavfi -i testsrc2=size=1280x720:rate=25:duration=3 $video "$out/detail.mp4"
# For recordings, 30 frames a second: the three columns with a steady tone, and a black picture
# that flashes white while a beep sounds, from 0.5 s to 0.6 s of every second.
ff -f lavfi -i "color=c=red:size=640x360:rate=30:duration=12,drawbox=x=213:y=0:w=214:h=360:color=lime:t=fill,drawbox=x=427:y=0:w=213:h=360:color=blue:t=fill" \
    -f lavfi -i sine=frequency=440:duration=12 $video $audio -shortest "$out/columns-tone.mp4"
ff -f lavfi -i "color=c=black:size=320x180:rate=30:duration=10,drawbox=c=white:t=fill:enable='between(mod(t,1),0.5,0.6)'" \
    -f lavfi -i "sine=frequency=1000:sample_rate=48000:duration=10,volume=volume=0:enable='not(between(mod(t,1),0.5,0.6))'" \
    $video $audio -shortest "$out/flash-beep.mp4"
# A face (a public-domain photograph) left of the centre of a wide grey picture for 6 s, right of
# it for 6 s, then gone.
ff -f lavfi -i color=c=gray:size=1280x720:rate=30:duration=18 \
    -loop 1 -i "$data/faces/grace_hopper_512x512.jpg" \
    -filter_complex "[1]scale=360:360[face];[0][face]overlay=x='if(lt(t,6),260,if(lt(t,12),640,-2000))':y=180:shortest=1" \
    -t 18 $video "$out/moving-face.mp4"
# Files that are not playable media.
printf 'This is a text file, not a video.\n' >"$out/text.mp4"
: >"$out/empty.mp4"
head -c 20000 "$out/clip.mp4" >"$out/truncated.mp4"
echo "$stamp" >"$out/.complete"
