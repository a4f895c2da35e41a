# Completion of tambrel-midi for fish.
set -l commands info play render convert loudness dump build
complete -c tambrel-midi -f
complete -c tambrel-midi -n "not __fish_seen_subcommand_from $commands" -a "$commands"
complete -c tambrel-midi -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c tambrel-midi -s h -l help -d 'Print the options'
for command in $commands
    set -l here "__fish_seen_subcommand_from $command"
    set -l endings .mid .midi .midi2 .smf2 .clip
    test $command = build; and set endings .txt
    for ending in $endings
        complete -c tambrel-midi -n $here -k -a "(__fish_complete_suffix $ending)"
    end
    complete -c tambrel-midi -n $here -l files0-from -r -F -d 'Read names from a file'
    complete -c tambrel-midi -n $here -l fail-fast -d 'Stop at the first failure'
    test $command = play; and continue
    complete -c tambrel-midi -n $here -l keep-going -d 'Go on after a failure'
    complete -c tambrel-midi -n $here -s j -l jobs -x -d 'Files at a time'
    test $command = info; and continue
    complete -c tambrel-midi -n $here -s o -l output -r -F -d 'File or folder to write to'
    complete -c tambrel-midi -n $here -l force -d 'Overwrite files that exist'
end
set -l here '__fish_seen_subcommand_from info'
complete -c tambrel-midi -n $here -l json -d 'One JSON object per file and line'
complete -c tambrel-midi -n $here -l all -d 'Show all that is in the files'
complete -c tambrel-midi -n $here -l check -d 'Show what is wrong with the files'
set here '__fish_seen_subcommand_from play render'
complete -c tambrel-midi -n $here -l soundfont -r -F -d 'Sound bank'
set here '__fish_seen_subcommand_from play render convert'
complete -c tambrel-midi -n $here -l loudness -d 'With drums and bass at full velocity'
set here '__fish_seen_subcommand_from play'
complete -c tambrel-midi -n $here -l loop -d 'Begin again after the last song'
complete -c tambrel-midi -n $here -l audio-driver -x -a 'pulseaudio alsa jack silent' -d 'Sound output'
set here '__fish_seen_subcommand_from render'
complete -c tambrel-midi -n $here -l format -x -a 'wav flac ogg opus raw' -d 'Sound format'
complete -c tambrel-midi -n $here -l bits -x -a '16 24 float' -d 'Size of samples'
complete -c tambrel-midi -n $here -l rate -x -a '44100 48000 96000' -d 'Sample rate'
complete -c tambrel-midi -n $here -l gain -x -d 'Decibels'
complete -c tambrel-midi -n $here -l normalize -d 'Loudness after EBU R 128'
complete -c tambrel-midi -n $here -l start -x -d 'Begin there'
complete -c tambrel-midi -n $here -l end -x -d 'End there'
complete -c tambrel-midi -n $here -l tail -x -d 'Render so long after the end'
complete -c tambrel-midi -n $here -l mute -x -d 'Leave notes out'
complete -c tambrel-midi -n $here -l solo -x -d 'Leave all other notes out'
complete -c tambrel-midi -n $here -l stems -x -a 'tracks channels' -d 'One file for each'
complete -c tambrel-midi -n $here -l no-effects -d 'Without reverb and chorus'
complete -c tambrel-midi -n $here -l best -d 'Interpolate samples by the seventh order'
