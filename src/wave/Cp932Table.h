#pragma once

// The tables of code page 932, made at build time from python3's cp932
// codec (tools/cp932-table.py), so that its decoding is the same on every
// machine. 0xFFFF marks a byte or pair that the code page leaves undefined.

// What each single byte is; a lead byte of a pair is undefined alone.
extern const char16_t kCp932Single[256];
// The row of each lead byte in kCp932Pairs; 0xFF for a byte that leads no pair.
extern const unsigned char kCp932LeadIndex[256];
// 256 characters a lead byte, by the trail byte.
extern const char16_t kCp932Pairs[];
