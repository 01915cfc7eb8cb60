# Files of at most `most` lines, which end in a line feed alone.
BEGIN { most = 400 }

FNR == most + 1 { print FILENAME ":" FNR ": the file is longer than " most " lines" }

/\r/ && FILENAME != told {
  print FILENAME ":" FNR ": a carriage return"
  told = FILENAME
}
