#pragma once

// Small "key = value" text files of the GoZ folders, read and written as raw bytes.
// The line rules are in KeyValueText.h.

// True when a line whose key matches was found. The value (quotes removed) is copied into
// value, cut to valueSize - 1 bytes plus a terminating zero. With a null value or a
// valueSize below 1 nothing is written, but the result still tells whether the key is there.
// A matching line without "=" gives true and leaves value as it was.
bool GetKeyValue(const char* path, const char* key, char* value, int valueSize);

// Drops every line of the key and appends "key = value" with an LF. Never creates the file.
// The new content goes to a file beside the old one that is then moved over it, so a failed
// write leaves the old file whole; only where that cannot be done is the file written in place.
void SetKeyValue(const char* path, const char* key, const char* value);
