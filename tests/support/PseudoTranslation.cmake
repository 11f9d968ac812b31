# cmake -DIN=template.ts -DOUT=pseudo.ts -P PseudoTranslation.cmake
# Fills every message of the template with its own source text between ⟦ and ⟧.
file(READ ${IN} ts)
string(REGEX REPLACE "<source>([^<]*)</source>([ \t\r\n]*)<translation type=\"unfinished\"></translation>"
       "<source>\\1</source>\\2<translation>⟦\\1⟧</translation>" ts "${ts}")
file(WRITE ${OUT} "${ts}")
