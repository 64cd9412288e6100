#!/bin/bash
# Draws the sample pages and stores them as TIFF files, each in another way. The pictures are drawn
# by ImageMagick with the URW and DejaVu fonts, and the files are written by libtiff's tools, so that
# reading them tries the library on what others wrote.
#
#   apt-get install imagemagick libtiff-tools fonts-urw-base35 fonts-dejavu-core
#   samples/make-samples.sh [FOLDER]        (without one: the samples' own folder)
set -euo pipefail

out=$(cd "${1:-$(dirname "$0")}" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

roman=(-font Nimbus-Roman-Regular)
bold=(-font Nimbus-Sans-Bold)
sans=(-font Nimbus-Sans-Regular)
mono=(-font DejaVu-Sans-Mono)
pen=(-stroke black -fill none)
ink=(-stroke none -fill black)
bilevel=(-threshold 50% -monochrome -depth 1 -define quantum:polarity=min-is-white)

# page NAME WIDTHxHEIGHT ARGUMENTS...: a white bilevel page with what the arguments draw.
page() {
    local name=$1 size=$2
    shift 2
    convert -size "$size" xc:white +antialias -fill black "$@" "${bilevel[@]}" \
        -units PixelsPerInch -density 200 -compress none "$name.tif"
}

# name FILE TITLE [PAGE]: what every sample has beside its pixels.
name() {
    tiffset ${3:+-d "$3"} -s 269 "$2" "$1"
    tiffset ${3:+-d "$3"} -s 305 "make-samples.sh" "$1"
}

head=("${bold[@]}" -pointsize 64 -annotate +390+235 'Marrowby & Sons'
    "${sans[@]}" -pointsize 30 -annotate +393+285 'Clockmakers, established 1871'
    "${pen[@]}" -strokewidth 6 -draw 'circle 260,230 260,150'
    -draw 'line 260,230 260,175' -draw 'line 260,230 300,250' -strokewidth 3
    -draw 'line 180,340 1474,340' "${ink[@]}")

# ---- letter.tif: three pages at 200 dpi, Group 4.

page letter1 1654x2339 "${head[@]}" "${roman[@]}" -pointsize 40 -annotate +180+470 \
'The Town Clerk
Harbour Street 14
Little Osmington

12 March

Dear Sir,

the clock of your market hall has been in our workshop since the
second week of January. We have taken it apart, and found what
you see in the list on the second page: the escape wheel is worn,
two of the bushings are oval, and a family of mice has lived behind
the quarter bell.

None of this is beyond repair. We propose to turn a new wheel from
our own stock, to bush the plates, and to regulate the movement for
four weeks before it goes back to its tower. The mice have already
been found a home elsewhere.

The drawing on the third page shows where the new crutch will go;
please let your carpenter leave 40 mm of free space to the left of
the pendulum.

We remain,
your obedient servants,' \
    "${pen[@]}" -strokewidth 5 \
    -draw 'bezier 190,1960 260,1790 300,1810 280,1950' \
    -draw 'bezier 280,1950 340,1810 380,1820 370,1950 470,1890 520,1870 560,1950' \
    -draw 'bezier 200,2000 380,1970 520,1970 700,1930' \
    "${ink[@]}" "${roman[@]}" -pointsize 40 -annotate +180+2070 'Edwin Marrowby' \
    "${sans[@]}" -pointsize 26 -annotate +180+2200 \
    'Marrowby & Sons, Weir Lane 3, Upper Tadham                                    page 1 of 3'

page letter2 1654x2339 "${head[@]}" "${bold[@]}" -pointsize 44 -annotate +180+470 'List of works' \
    "${mono[@]}" -pointsize 30 -annotate +200+600 \
'No  Part                       Days      Price

 1  Escape wheel, new             6      84.00
 2  Bushings, four                2      22.50
 3  Pallets, polished             1      12.00
 4  Suspension spring             -       3.75
 5  Crutch, forged and fitted     2      31.00
 6  Quarter bell, re-hung         1       9.50
 7  Removal of mice               -       0.00
 8  Regulation                   28      40.00
 9  Carriage and fitting          2      55.00

    Sum                          42     257.75' \
    "${pen[@]}" -strokewidth 2 -draw 'rectangle 180,550 1070,1060' -draw 'line 180,620 1070,620' \
    -draw 'line 180,975 1070,975' -draw 'line 740,550 740,1060' -draw 'line 870,550 870,1060' \
    "${ink[@]}" "${roman[@]}" -pointsize 36 -annotate +180+1230 \
'Prices hold until the end of May. The old wheel stays your property
and will be handed over with the clock.' \
    "${sans[@]}" -pointsize 26 -annotate +180+2200 \
    'Marrowby & Sons, Weir Lane 3, Upper Tadham                                    page 2 of 3'

spokes=()
for degrees in 0 30 60 90 120 150; do
    spokes+=(-draw "translate 827,950 rotate $degrees line -300,0 300,0")
done
teeth=()
for degrees in $(seq 0 12 348); do
    teeth+=(-draw "translate 827,950 rotate $degrees path 'M -24,-330 L 24,-330 L 20,-380 Z'")
done
page letter3 1654x2339 "${head[@]}" "${bold[@]}" -pointsize 44 -annotate +180+470 \
    'Escape wheel and crutch' "${pen[@]}" -strokewidth 4 \
    -draw 'circle 827,950 827,620' -draw 'circle 827,950 827,650' -draw 'circle 827,950 827,880' \
    "${spokes[@]}" "${teeth[@]}" \
    -draw 'path "M 560,560 Q 827,430 1094,560 L 1060,620 Q 827,500 594,620 Z"' \
    -draw 'line 827,500 827,1850' -draw 'circle 827,1930 827,1850' -strokewidth 2 \
    -draw 'line 627,1400 827,1400' -draw 'polyline 647,1390 627,1400 647,1410' \
    -draw 'polyline 807,1390 827,1400 807,1410' "${ink[@]}" "${sans[@]}" -pointsize 30 \
    -annotate +680+1385 '40 mm' -annotate +1250+960 '30 teeth' \
    -pointsize 26 -annotate +180+2200 \
    'Marrowby & Sons, Weir Lane 3, Upper Tadham                                    page 3 of 3'

tiffcp -c g4 -r 2339 letter1.tif letter2.tif letter3.tif letter.tif
for i in 0 1 2; do name letter.tif 'Estimate for the market hall clock' "$i"; done

# ---- fax.tif: a fax of standard resolution, Group 3 two-dimensional, low bit first, as it comes
# from many a modem. Drawn at 204 x 204 dpi; every second line is left out.

page fax 1728x2286 "${mono[@]}" -pointsize 26 -annotate +30+40 \
    '14-MAR 09:12   FROM UPPER TADHAM 5512        TO LITTLE OSMINGTON 77        P.01/01' \
    "${bold[@]}" -pointsize 90 -annotate +200+260 'FACSIMILE' \
    "${pen[@]}" -strokewidth 6 -draw 'line 200,300 1528,300' "${ink[@]}" \
    "${sans[@]}" -pointsize 44 -annotate +200+430 \
'To:         The Town Clerk, Little Osmington
From:     Marrowby & Sons, clockmakers
Date:      14 March
Pages:    1' "${pen[@]}" -draw 'line 200,640 1528,640' "${ink[@]}" \
    "${roman[@]}" -pointsize 52 -annotate +200+760 \
'The wheel is cut and runs true. We should like
to bring the clock back on Thursday, if the
scaffolding can stand until then.

Please have somebody at the tower at eight.

                                       E. Marrowby' \
    "${pen[@]}" -strokewidth 5 -draw 'circle 600,1700 600,1420' -draw 'circle 600,1700 600,1680' \
    -draw 'line 600,1700 600,1470' -draw 'line 600,1700 440,1790' "${ink[@]}" \
    "${bold[@]}" -pointsize 60 -annotate +980+1720 'Thursday, 8:00'
convert fax.tif -filter point -resize 1728x1098! "${bilevel[@]}" \
    -units PixelsPerInch -density 204x98 -compress none fax98.tif
tiffcp -c g3:2d:fill -f lsb2msb -r 1098 fax98.tif fax.tif
name fax.tif 'Fax of 14 March'

# ---- drawing.tif: 8-bit grey, PackBits, big-endian, resolution in centimetres.

convert -size 480x320 gradient:white-gray55 -fill white -stroke gray20 -strokewidth 3 \
    -draw 'path "M 40,250 L 40,140 L 130,60 L 220,140 L 220,250 Z"' -fill gray70 \
    -draw 'rectangle 105,180 155,250' -draw 'rectangle 60,150 90,180' -draw 'rectangle 170,150 200,180' \
    -fill gray85 -draw 'rectangle 300,60 370,250' -fill gray40 -draw 'polygon 290,60 335,10 380,60' \
    -fill white -draw 'circle 335,105 335,80' -fill none -draw 'line 335,105 335,88' -draw 'line 335,105 345,110' \
    -fill gray30 -draw 'rectangle 0,250 480,260' "${sans[@]}" -stroke none -fill black \
    -pointsize 22 -annotate +40+295 'Market hall and tower, seen from the weir' \
    -colorspace gray -type grayscale -depth 8 -units PixelsPerCentimeter -density 60 \
    -compress none grey.tif
tiffcp -B -c packbits -r 32 grey.tif drawing.tif
name drawing.tif 'Market hall and tower'

# ---- colour.tif: RGB, LZW with differencing, several strips.

convert -size 320x240 gradient:'#7fb2e5'-'#fbe8c8' \
    \( -size 320x240 xc:none -fill '#f7c948' -draw 'circle 240,70 240,40' \
    -fill '#5b8c5a' -draw 'path "M 0,170 Q 90,110 180,165 T 320,150 L 320,240 L 0,240 Z"' \
    -fill '#2e5e4e' -draw 'path "M 0,205 Q 110,160 200,205 T 320,195 L 320,240 L 0,240 Z"' \
    -fill '#a63d40' -draw 'rectangle 60,130 100,175' -fill '#5c1f22' -draw 'polygon 52,130 80,100 108,130' \) \
    -composite "${bold[@]}" -fill '#1b1b3a' -pointsize 20 -annotate +12+230 'The weir at Upper Tadham' \
    -type truecolor -depth 8 -units PixelsPerInch -density 150 -compress none rgb.tif
tiffcp -c lzw:2 -r 40 rgb.tif colour.tif
name colour.tif 'The weir at Upper Tadham'

# ---- palette.tif: a stamp in sixteen colours, 4 bits a pixel, LZW without differencing.

convert -size 200x240 xc:'#fff8e7' -fill '#1d3557' -draw 'rectangle 8,8 191,231' \
    -fill '#f1faee' -draw 'rectangle 16,16 183,223' -fill '#a8dadc' -draw 'rectangle 24,24 175,180' \
    -fill '#e63946' -draw 'circle 100,100 100,40' -fill '#f1faee' -draw 'circle 100,100 100,48' \
    -fill none -stroke '#1d3557' -strokewidth 5 -draw 'line 100,100 100,60' -draw 'line 100,100 128,116' \
    -stroke none -fill '#457b9d' "${bold[@]}" -pointsize 28 -annotate +50+212 '20 pence' \
    +dither -colors 16 -type palette -units PixelsPerInch \
    -density 300 -compress none stamp.tif
tiffcp -c lzw:1 stamp.tif palette.tif
name palette.tif 'Stamp of twenty pence'

mv letter.tif fax.tif drawing.tif colour.tif palette.tif "$out"
