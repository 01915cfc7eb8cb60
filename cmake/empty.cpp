// Compiled for the headers that come before it.
