#!/bin/sh
# Regenerates the sample texts of the qxi18n demo and tests from the UTF-8 originals below.
# Run from anywhere: ./generate.sh   (needs iconv; every file is committed next to this script)
set -eu
cd "$(dirname "$0")"

# encode FILE ENCODING: UTF-8 on standard input, FILE in ENCODING on disk.
encode() { iconv -f UTF-8 -t "$2" > "$1"; }

encode french.windows-1252.txt WINDOWS-1252 <<'TEXT'
Le cœur du marché bat dès l'aube : on y vend des pêches, des œufs et du pain brûlé.
« Combien pour ce panier ? » demande Zoé. – Douze euros, ou 12 € si vous préférez.
Chaque samedi, le vieux Hervé raconte la même histoire… et personne ne s'en lasse.
TEXT

encode russian.koi8-r.txt KOI8-R <<'TEXT'
Зимой в маленьком городе рано темнеет, и фонари загораются в четыре часа.
Ёжик шёл по снегу и считал следы: один, два, три, а потом сбился со счёта.
Чай остыл, но разговор на кухне продолжался до полуночи.
TEXT

# The same text in both Japanese encodings, so they can be checked against each other.
cat > japanese.utf-8.tmp <<'TEXT'
春の雨が静かに降っている。駅前の本屋で、古い地図を一枚買った。
カタカナとひらがな、それに漢字を少し。ＡＢＣ全角英字と半角ｶﾀｶﾅも並べてみる。
夕方には晴れて、川沿いの道を歩いて帰った。
TEXT
encode japanese.shift_jis.txt SHIFT_JIS < japanese.utf-8.tmp
encode japanese.euc-jp.txt EUC-JP < japanese.utf-8.tmp
rm japanese.utf-8.tmp

encode chinese.gb18030.txt GB18030 <<'TEXT'
今天早上下了一场小雨，院子里的竹子显得格外青翠。
我们在茶馆里聊了很久，从“Straße”这个德语词一直说到各地的方言。
晚上回家的路上，月亮又圆又亮。
TEXT

encode greek.iso-8859-7.txt ISO-8859-7 <<'TEXT'
Το πρωί η θάλασσα ήταν ήρεμη και τα καΐκια έβγαιναν ένα ένα από το λιμάνι.
Η γιαγιά έφτιαξε πίτα με σπανάκι και μας φώναξε όλους στο τραπέζι.
Ώρα για ύπνο· αύριο έχουμε πολύ δρόμο μπροστά μας.
TEXT

# UTF-16, little-endian, with a byte order mark; the last line holds a character outside the BMP.
{
    printf '\377\376'
    iconv -f UTF-8 -t UTF-16LE <<'TEXT'
Mixed scripts in one file: English, Ελληνικά, Русский, 日本語, 中文.
Each line ends with a line feed encoded as two bytes.
A character beyond the BMP needs a surrogate pair: 🙂 (U+1F642).
TEXT
} > mixed.utf-16le-bom.txt

# Characters that ISO-8859-1 cannot hold, next to some that it can.
cat > beyond-latin1.utf-8.txt <<'TEXT'
Café crème: 3,50 € — “Grüße” from Łódź, ½ price for Ωmega fans ☕ 🙂
TEXT

# UTF-8 with one malformed sequence on line 3: a lone continuation byte 0x80.
{
    printf 'The first line is fine.\n'
    printf 'So is the second: naïve façade.\n'
    printf 'The third has a broken byte here: \200 and goes on.\n'
    printf 'The fourth line is fine again.\n'
} > malformed.utf-8.txt
