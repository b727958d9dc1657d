#pragma once

namespace cvn73100::CliMsg {

// The numbers of the command line's texts in the message catalogue; {1}, {2}... are filled in by CliText.

inline constexpr int APP_DESCRIPTION = 2000;  // cvnscope: find, test and control 73100-family oscilloscopes over GPIB …
inline constexpr int APP_SIMULATED = 2001;  // With no I/O configuration the built-in simulated instrument answers on…
inline constexpr int APP_EXIT_STATUS = 2002;  // Exit status: 0 done, 1 error, 2 usage, 3 cancelled at a question, 10+c…
inline constexpr int HELP_FLAG = 2003;  // Print this help message and exit
inline constexpr int HELP_ALL_FLAG = 2004;  // Show the help of every command
inline constexpr int VERSION_FLAG = 2005;  // Display program version information and exit
inline constexpr int FORM_OPTION = 2006;  // The form file that keeps the control's properties
inline constexpr int JSON_OPTION = 2007;  // Print results as JSON for scripts
inline constexpr int YES_OPTION = 2008;  // Answer OK to every question
inline constexpr int PARENTS_OPTION = 2009;  // Create the missing folders of output files
inline constexpr int PROGRESS_OPTION = 2010;  // Draw progress even when standard error is not a terminal
inline constexpr int COUNTRY_OPTION = 2011;  // Language of this run's messages by country code (1, 33, 34, 39, 49, 81…
inline constexpr int COMPLETION_COMMAND = 2012;  // Print a completion script for bash, zsh or fish
inline constexpr int SHELL_ARGUMENT = 2013;  // bash, zsh or fish
inline constexpr int SIM_COMMAND = 2014;  // The built-in simulated instruments
inline constexpr int SIM_RESET_COMMAND = 2015;  // Forget the settings the simulated instruments kept: they start afresh
inline constexpr int LABEL_USAGE = 2016;  // Usage
inline constexpr int LABEL_OPTIONS = 2017;  // Options
inline constexpr int LABEL_COMMANDS = 2018;  // Commands
inline constexpr int LABEL_ARGUMENTS = 2019;  // Arguments
inline constexpr int LABEL_REQUIRED = 2020;  // REQUIRED
inline constexpr int LABEL_OPTIONS_BADGE = 2021;  // OPTIONS
inline constexpr int LABEL_COMMAND_BADGE = 2022;  // COMMAND
inline constexpr int LABEL_EXCLUDES = 2023;  // Excludes
inline constexpr int LABEL_NEEDS = 2024;  // Needs
inline constexpr int MORE_INFORMATION = 2025;  // Run with --help for more information.
inline constexpr int ERROR_LINE = 2026;  // Error {1}: {2}: {3}
inline constexpr int PROPERTY_ALLOWED = 2027;  // {1} ({2} {3}: allowed {4})
inline constexpr int USAGE_ERROR = 2028;  // Usage error: {1}
inline constexpr int ADDRESS_COMMAND = 2050;  // Check an instrument address: print its canonical and automation-server…
inline constexpr int ADDRESS_ARGUMENT = 2051;  // e.g. GPIB0::7::INSTR, COM2::Baud=19200,Handshake=DTR_DSR
inline constexpr int DTR_ONLY_FLAG = 2052;  // Serial ports may use only DTR/DSR handshaking
inline constexpr int MESSAGE_COMMAND = 2053;  // Print a text of the message catalogue (in the language of --country)
inline constexpr int MESSAGE_NUMBER_ARGUMENT = 2054;  // Message number, e.g. 106
inline constexpr int MESSAGE_UNKNOWN = 2055;  // Message {1} is not in the catalogue.
inline constexpr int ASK_OK_TO_CONTINUE = 2060;  // OK to continue?
inline constexpr int ASK_CONTINUE = 2061;  // Continue?
inline constexpr int NO_TERMINAL_CANCEL = 2062;  // [no terminal: answered Cancel; use --yes to answer OK]
inline constexpr int ASK_REPLACE_FILE = 2063;  // {1} already exists. Replace it?
inline constexpr int RESOURCES_COMMAND = 2100;  // List the instrument resources the I/O library finds, and where each po…
inline constexpr int RESOURCES_MATCHING = 2101;  // Resources matching {1}:
inline constexpr int NONE_FOUND = 2102;  // (none)
inline constexpr int TEST_COMMAND = 2103;  // Ask the instrument at ADDRESS for its identity (*IDN?) and print what …
inline constexpr int TEST_EXIT_STATUS = 2104;  // Exit status: 0 for a supported instrument, 10 + the result code otherw…
inline constexpr int ALLOWED_ADDRESS = 2105;  // GPIB0..3::0..30::INSTR or COM1..4[::Baud=…,Handshake=…]
inline constexpr int SEARCH_COMMAND = 2106;  // Search every included COM port and GPIB address for instruments (the S…
inline constexpr int EXCLUDE_SILENT_FLAG = 2107;  // Exclude the COM ports without an instrument from future searches
inline constexpr int KEEP_SILENT_FLAG = 2108;  // Keep every COM port in future searches (the default without a terminal…
inline constexpr int ALL_FLAG = 2109;  // Also list the GPIB addresses that did not answer
inline constexpr int USE_COMMAND = 2110;  // Make a row of the last search's table, or an address, the control's ad…
inline constexpr int USE_TARGET_ARGUMENT = 2111;  // A row number of `cvnscope search`, or e.g. GPIB0::7::INSTR, COM1
inline constexpr int NO_SEARCH_RESULTS = 2112;  // No search results: run `cvnscope search` first.
inline constexpr int ROW_NOT_IN_TABLE = 2113;  // Row {1} is not in the last search's table (rows 1 to {2}).
inline constexpr int ALLOWED_USE_TARGET = 2114;  // a row of the last search, GPIB0..3::0..30::INSTR or COM1..4[::…]
inline constexpr int CANCELLED_ADDRESS_STAYS = 2115;  // Cancelled: the address stays {1}.
inline constexpr int FIELD_ADDRESS = 2116;  // Address
inline constexpr int FIELD_INSTRUMENT = 2117;  // Instrument
inline constexpr int SILENT_ADDRESSES = 2118;  // {1} addresses did not answer (--all lists them).
inline constexpr int SILENT_ADDRESS = 2119;  // 1 address did not answer (--all lists it).
inline constexpr int MARKS_CONTROL_ADDRESS = 2120;  // * marks the control's address.
inline constexpr int IDN_COMMAND = 2200;  // Open the connection at the control's address and print the instrument'…
inline constexpr int ERRORS_COMMAND = 2201;  // Read and print the instrument's error queue until it is empty
inline constexpr int NO_CHECK_FLAG = 2202;  // Do not read the instrument's error queue afterwards
inline constexpr int WRITE_COMMAND = 2203;  // Send a command to the instrument at the control's address
inline constexpr int QUERY_COMMAND = 2204;  // Send a query to the instrument and print its reply
inline constexpr int EXAMPLE = 2205;  // e.g. {1}
inline constexpr int BLOCK_FLAG = 2206;  // The reply is a definite-length block (e.g. ":SYSTem:SETup?"): read it …
inline constexpr int QUERY_OUTPUT_OPTION = 2207;  // Write the reply's bytes to this file as they came (- for standard outp…
inline constexpr int INSTRUMENT_REPORTED = 2208;  // the instrument reported {1} after {2}
inline constexpr int REPLY_IS_BINARY = 2209;  // The reply is binary ({1} bytes): write it with -o FILE, or -o - to sen…
inline constexpr int BYTES_WRITTEN_TO = 2210;  // {1} bytes written to {2}
inline constexpr int WAVEFORM_COMMAND = 2211;  // Capture one channel's record: CSV rows "time,volts" (seconds, volts) a…
inline constexpr int CHANNEL_OPTION = 2212;  // Analog channel 1..4
inline constexpr int POINTS_OPTION = 2213;  // 100, 250, 500, 1000, 2000, or 0 for the whole record
inline constexpr int CSV_OUTPUT_OPTION = 2214;  // CSV file (default: standard output, unless --plot; - for standard outp…
inline constexpr int PLOT_OPTION = 2215;  // PNG file for a plot of the waveform (- for standard output)
inline constexpr int ONLY_ONE_TO_STDOUT = 2216;  // only one of them can go to standard output
inline constexpr int POINTS_WRITTEN_TO = 2217;  // {1} points of channel {2} written to {3}
inline constexpr int FIELD_PLOT = 2218;  // Plot
inline constexpr int SCREENSHOT_COMMAND = 2219;  // Save the instrument's screen as an image file
inline constexpr int IMAGE_FILE_ARGUMENT = 2220;  // Image file (- for standard output)
inline constexpr int FORMAT_OPTION = 2221;  // bmp, gif, tif or jpg (default: by the file's extension, else bmp)
inline constexpr int NOT_AN_IMAGE_FORMAT = 2222;  // {1}: {2} is not an image format of the instrument (bmp, gif, tif, jpg)…
inline constexpr int FORMAT_MISMATCH = 2223;  // {1} would hold {2} under the name {3}; name the file .{2}
inline constexpr int SCREEN_IMAGE_WRITTEN = 2224;  // Screen image ({1}, {2} bytes) written to {3}
inline constexpr int WHAT_REPLY_FILE = 2230;  // Reply file
inline constexpr int WHAT_CSV_FILE = 2231;  // CSV file
inline constexpr int WHAT_PLOT = 2232;  // Plot
inline constexpr int WHAT_SCREEN_IMAGE = 2233;  // Screen image
inline constexpr int WHAT_SETUP_FILE = 2234;  // Setup file
inline constexpr int FOLDER_MISSING = 2235;  // {1} {2}: the folder {3} does not exist (--parents creates it)
inline constexpr int TEMPORARY_FOLDER = 2236;  // Temporary folder {1}: {2}

}  // namespace cvn73100::CliMsg
