// Keeps a library alive whose room has no source yet.
