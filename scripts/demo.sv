# A document from generated audio: a chord, a pause, noise.
new 44100 2
generate tone 440 3 -12
generate silence 0.5
generate noise 1 -30
# Echo over the first two seconds.
select 0 2
effect echo preset=Höhle
# A band effect: only 1 to 2 kHz of the noise gets 6 dB louder.
select 3.5 4.5
band 1000 2000
effect gain Pegel=6
band off
# Changed our mind about a fade: undo it.
select 0 1
fadein
undo
bookmark add Rauschen 3.5
region add Ton 0 3
tag TITLE=Sonvale-Demo
tag ARTIST=Sonvale
history
save $OUT/demo.wav
project save $OUT/demo.svp
status
