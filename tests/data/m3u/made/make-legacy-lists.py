#!/usr/bin/env python3
"""Writes the legacy-encoded playlists of this folder: made-up channels in the shapes that real
lists of old IPTV collections have (Windows-1252 bytes, CRLF, LF and lone CR in one file,
unquoted attribute values with spaces, #EXTINF lines without a comma, a stray text line).
Run it from anywhere; it writes next to itself. The output is deterministic."""

import os

HERE = os.path.dirname(os.path.abspath(__file__))


def write(name, text, encoding, breaks):
    lines = text.split("\n")
    out = bytearray()
    for i, line in enumerate(lines):
        out += line.encode(encoding)
        if i < len(lines) - 1:
            out += breaks[i % len(breaks)]
    with open(os.path.join(HERE, name), "wb") as f:
        f.write(bytes(out))


GERMAN = """#EXTM3U

#EXTINF:-1 tvg-name=Erstes Programm tvg-id=Erstes.de tvg-logo=http://logos.example/erstes.png group-title="DEUTSCHES TV",Erstes Programm

https://tv.example/erstes/master.m3u8
#EXTINF:-1 tvg-name=Zweites tvg-id=Zweites.de group-title="DEUTSCHES TV", Zweites
https://tv.example/zweites/master.m3u8
#EXTINF:-1 tvg-name=Stadt Köln tvg-id=Koeln.de tvg-logo=http://logos.example/koeln.png group-title="REGIONAL",Stadt Köln
https://tv.example/koeln/index.m3u8
#EXTINF:-1 group-title="NACHRICHTEN",Nachrichten – Live
https://tv.example/nachrichten.m3u8
#EXTINF:-1 tvg-name=Müllers Küche group-title="KOCHEN"
https://tv.example/kueche.m3u8
Sender nicht mehr verfügbar
#EXTINF:-1 tvg-id=Sport.de group-title="SPORT",Sport 1 (Österreich)
https://tv.example/sport/index.m3u8?token=a&b=1
#EXTINF:-1 tvg-name="Musik" tvg-country="DE" group-title="MUSIK",Musik
rtmp://tv.example/live/musik
#EXTINF:-1 group-title="REGIONAL",Bayern Süd
https://tv.example/bayern-sued.m3u8
#EXTINF:-1,Kinder
https://tv.example/kinder.m3u8
#EXTINF:-1 group-title="DOKU",Dokumentationen „Natur“
https://tv.example/doku.m3u8
"""

SLOVAK = """#EXTM3U
#EXTINF:-1 tvg-logo="http://logos.example/jednotka.png" group-title="SLOVENSKO",Jednotka
https://tv.example/sk/jednotka.m3u8
#EXTINF:-1 tvg-logo="http://logos.example/kosice.png" group-title="SLOVENSKO",Košice:dnes
https://tv.example/sk/kosice/playlist.m3u8
#EXTINF:-1 group-title="SLOVENSKO",Žilina TV
https://tv.example/sk/zilina.m3u8
#EXTINF:-1 group-title="SLOVENSKO",Šport
https://tv.example/sk/sport.m3u8
"""

GROUPS = ["Nachrichten", "Sport", "Musik", "Kinder", "Dokumentation", "Filme", "Serien",
          "Regional", "Kochen", "Reisen", "Wissen", "Comedy", "Religion", "Wetter", "Shopping",
          "Kultur", "Natur", "Geschichte", "Technik", "Autos", "Tiere", "Mode", "Gesundheit",
          "Jagd", "Allgemein"]
COUNTRIES = ["DE", "AT", "CH", "FR", "IT", "ES", "PL", "CZ", "SK", "HU", "NL", "BE", "DK", "SE",
             "NO", "FI", "PT", "GR", "TR", "GB"]
WORDS = ["Allgäu", "Bären", "Straße", "Öko", "Grün", "Süd", "Café", "Señor", "Škoda", "Žlutá",
         "Rhein", "Alpen", "Nord", "Stadt", "Welt", "Blick", "Zeit", "Heimat", "Klassik", "Live"]


def all_tv():
    lines = ["#EXTM3U"]
    for i in range(800):
        name = f"{WORDS[i % len(WORDS)]} {WORDS[(i * 7 + 3) % len(WORDS)]} {i}"
        attributes = []
        if i % 5:
            attributes.append(f'tvg-logo="http://logos.example/{i}.png"')
        if i % 3:
            attributes.append(f'tvg-country="{COUNTRIES[i % len(COUNTRIES)]}"')
        attributes.append(f'group-title="{GROUPS[(i * 11) % len(GROUPS)]}"')
        lines.append(f"#EXTINF:-1 {' '.join(attributes)},{name}")
        lines.append(f"http://tv.example/{i}/index.m3u8")
    return "\n".join(lines) + "\n"


write("german-cp1252-mixed-breaks.m3u", GERMAN, "cp1252", [b"\r\n", b"\n", b"\r"])
write("german-utf8.m3u", GERMAN, "utf-8", [b"\n"])
write("slovak-cp1252.m3u", SLOVAK, "cp1252", [b"\r\n"])
write("all-tv-cp1252.m3u", all_tv(), "cp1252", [b"\n"])
