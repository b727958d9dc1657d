#pragma once

namespace cvn73100::CliMsg {

// The numbers of the command line's texts in the message catalogue; {1}, {2}... are filled in by CliText.

inline constexpr int APP_DESCRIPTION = 2000;  // cvnscope: find, test and control 73100-family oscilloscopes over GPIB …
inline constexpr int APP_SIMULATED = 2001;  // With no I/O configuration the built-in simulated instrument answers on…
inline constexpr int APP_EXIT_STATUS = 2002;  // Exit status: 0 done, 1 error, 2 usage, 3 cancelled at a question, 10+c…
inline constexpr int HELP_FLAG = 2003;        // Print this help message and exit
inline constexpr int HELP_ALL_FLAG = 2004;    // Show the help of every command
inline constexpr int VERSION_FLAG = 2005;     // Display program version information and exit
inline constexpr int FORM_OPTION = 2006;      // The form file that keeps the control's properties
inline constexpr int JSON_OPTION = 2007;      // Print results as JSON for scripts
inline constexpr int YES_OPTION = 2008;       // Answer OK to every question
inline constexpr int PARENTS_OPTION = 2009;   // Create the missing folders of output files
inline constexpr int PROGRESS_OPTION = 2010;  // Draw progress even when standard error is not a terminal
inline constexpr int COUNTRY_OPTION = 2011;  // Language of this run's messages by country code (1, 33, 34, 39, 49, 81…
inline constexpr int COMPLETION_COMMAND = 2012;  // Print a completion script for bash, zsh or fish
inline constexpr int SHELL_ARGUMENT = 2013;      // bash, zsh or fish
inline constexpr int SIM_COMMAND = 2014;         // The built-in simulated instruments
inline constexpr int SIM_RESET_COMMAND = 2015;  // Forget the settings the simulated instruments kept: they start afresh
inline constexpr int LABEL_USAGE = 2016;        // Usage
inline constexpr int LABEL_OPTIONS = 2017;      // Options
inline constexpr int LABEL_COMMANDS = 2018;     // Commands
inline constexpr int LABEL_ARGUMENTS = 2019;    // Arguments
inline constexpr int LABEL_REQUIRED = 2020;     // REQUIRED
inline constexpr int LABEL_OPTIONS_BADGE = 2021;  // OPTIONS
inline constexpr int LABEL_COMMAND_BADGE = 2022;  // COMMAND
inline constexpr int LABEL_EXCLUDES = 2023;       // Excludes
inline constexpr int LABEL_NEEDS = 2024;          // Needs
inline constexpr int MORE_INFORMATION = 2025;     // Run with --help for more information.
inline constexpr int ERROR_LINE = 2026;           // Error {1}: {2}: {3}
inline constexpr int PROPERTY_ALLOWED = 2027;     // {1} ({2} {3}: allowed {4})
inline constexpr int USAGE_ERROR = 2028;          // Usage error: {1}
inline constexpr int ADDRESS_COMMAND = 2050;  // Check an instrument address: print its canonical and automation-server…
inline constexpr int ADDRESS_ARGUMENT = 2051;  // e.g. GPIB0::7::INSTR, COM2::Baud=19200,Handshake=DTR_DSR
inline constexpr int DTR_ONLY_FLAG = 2052;     // Serial ports may use only DTR/DSR handshaking
inline constexpr int MESSAGE_COMMAND = 2053;   // Print a text of the message catalogue (in the language of --country)
inline constexpr int MESSAGE_NUMBER_ARGUMENT = 2054;  // Message number, e.g. 106
inline constexpr int MESSAGE_UNKNOWN = 2055;          // Message {1} is not in the catalogue.
inline constexpr int ASK_OK_TO_CONTINUE = 2060;       // OK to continue?
inline constexpr int ASK_CONTINUE = 2061;             // Continue?
inline constexpr int NO_TERMINAL_CANCEL = 2062;       // [no terminal: answered Cancel; use --yes to answer OK]
inline constexpr int ASK_REPLACE_FILE = 2063;         // {1} already exists. Replace it?
inline constexpr int RESOURCES_COMMAND =
    2100;  // List the instrument resources the I/O library finds, and where each po…
inline constexpr int RESOURCES_MATCHING = 2101;  // Resources matching {1}:
inline constexpr int NONE_FOUND = 2102;          // (none)
inline constexpr int TEST_COMMAND = 2103;  // Ask the instrument at ADDRESS for its identity (*IDN?) and print what …
inline constexpr int TEST_EXIT_STATUS =
    2104;  // Exit status: 0 for a supported instrument, 10 + the result code otherw…
inline constexpr int ALLOWED_ADDRESS = 2105;  // GPIB0..3::0..30::INSTR or COM1..4[::Baud=…,Handshake=…]
inline constexpr int SEARCH_COMMAND = 2106;  // Search every included COM port and GPIB address for instruments (the S…
inline constexpr int EXCLUDE_SILENT_FLAG = 2107;  // Exclude the COM ports without an instrument from future searches
inline constexpr int KEEP_SILENT_FLAG =
    2108;                                 // Keep every COM port in future searches (the default without a terminal…
inline constexpr int ALL_FLAG = 2109;     // Also list the GPIB addresses that did not answer
inline constexpr int USE_COMMAND = 2110;  // Make a row of the last search's table, or an address, the control's ad…
inline constexpr int USE_TARGET_ARGUMENT = 2111;  // A row number of `cvnscope search`, or e.g. GPIB0::7::INSTR, COM1
inline constexpr int NO_SEARCH_RESULTS = 2112;    // No search results: run `cvnscope search` first.
inline constexpr int ROW_NOT_IN_TABLE = 2113;     // Row {1} is not in the last search's table (rows 1 to {2}).
inline constexpr int ALLOWED_USE_TARGET = 2114;   // a row of the last search, GPIB0..3::0..30::INSTR or COM1..4[::…]
inline constexpr int CANCELLED_ADDRESS_STAYS = 2115;  // Cancelled: the address stays {1}.
inline constexpr int FIELD_ADDRESS = 2116;            // Address
inline constexpr int FIELD_INSTRUMENT = 2117;         // Instrument
inline constexpr int SILENT_ADDRESSES = 2118;         // {1} addresses did not answer (--all lists them).
inline constexpr int SILENT_ADDRESS = 2119;           // 1 address did not answer (--all lists it).
inline constexpr int MARKS_CONTROL_ADDRESS = 2120;    // * marks the control's address.
inline constexpr int PARALLEL_FLAG = 2121;  // Probe every COM port and GPIB board at the same time (the table is the…
inline constexpr int SEARCH_STOPPED = 2122;  // Search stopped.
inline constexpr int IDN_COMMAND = 2200;  // Open the connection at the control's address and print the instrument'…
inline constexpr int ERRORS_COMMAND = 2201;  // Read and print the instrument's error queue until it is empty
inline constexpr int NO_CHECK_FLAG = 2202;   // Do not read the instrument's error queue afterwards
inline constexpr int WRITE_COMMAND = 2203;   // Send a command to the instrument at the control's address
inline constexpr int QUERY_COMMAND = 2204;   // Send a query to the instrument and print its reply
inline constexpr int EXAMPLE = 2205;         // e.g. {1}
inline constexpr int BLOCK_FLAG = 2206;  // The reply is a definite-length block (e.g. ":SYSTem:SETup?"): read it …
inline constexpr int QUERY_OUTPUT_OPTION =
    2207;  // Write the reply's bytes to this file as they came (- for standard outp…
inline constexpr int INSTRUMENT_REPORTED = 2208;  // the instrument reported {1} after {2}
inline constexpr int REPLY_IS_BINARY = 2209;  // The reply is binary ({1} bytes): write it with -o FILE, or -o - to sen…
inline constexpr int BYTES_WRITTEN_TO = 2210;  // {1} bytes written to {2}
inline constexpr int WAVEFORM_COMMAND =
    2211;  // Capture one channel's record: CSV rows "time,volts" (seconds, volts) a…
inline constexpr int CHANNEL_OPTION = 2212;  // Analog channel 1..4
inline constexpr int POINTS_OPTION = 2213;   // 100, 250, 500, 1000, 2000, or 0 for the whole record
inline constexpr int CSV_OUTPUT_OPTION =
    2214;                                 // CSV file (default: standard output, unless --plot; - for standard outp…
inline constexpr int PLOT_OPTION = 2215;  // PNG file for a plot of the waveform (- for standard output)
inline constexpr int ONLY_ONE_TO_STDOUT = 2216;   // only one of them can go to standard output
inline constexpr int POINTS_WRITTEN_TO = 2217;    // {1} points of channel {2} written to {3}
inline constexpr int FIELD_PLOT = 2218;           // Plot
inline constexpr int SCREENSHOT_COMMAND = 2219;   // Save the instrument's screen as an image file
inline constexpr int IMAGE_FILE_ARGUMENT = 2220;  // Image file (- for standard output)
inline constexpr int FORMAT_OPTION = 2221;        // bmp, gif, tif or jpg (default: by the file's extension, else bmp)
inline constexpr int NOT_AN_IMAGE_FORMAT =
    2222;  // {1}: {2} is not an image format of the instrument (bmp, gif, tif, jpg)…
inline constexpr int FORMAT_MISMATCH = 2223;       // {1} would hold {2} under the name {3}; name the file .{2}
inline constexpr int SCREEN_IMAGE_WRITTEN = 2224;  // Screen image ({1}, {2} bytes) written to {3}
inline constexpr int WHAT_REPLY_FILE = 2230;       // Reply file
inline constexpr int WHAT_CSV_FILE = 2231;         // CSV file
inline constexpr int WHAT_PLOT = 2232;             // Plot
inline constexpr int WHAT_SCREEN_IMAGE = 2233;     // Screen image
inline constexpr int WHAT_SETUP_FILE = 2234;       // Setup file
inline constexpr int FOLDER_MISSING = 2235;        // {1} {2}: the folder {3} does not exist (--parents creates it)
inline constexpr int TEMPORARY_FOLDER = 2236;      // Temporary folder {1}: {2}
inline constexpr int SETUP_COMMAND = 2300;  // Instrument setups (learn strings): fetch, send, save, open, show, list…
inline constexpr int SETUP_GET_COMMAND =
    2301;  // Fetch the instrument's current setup into setup NAME (added when new; …
inline constexpr int SETUP_NAME_ARGUMENT = 2302;    // Setup name: no spaces, no "|"
inline constexpr int SETUP_COMMENTS_OPTION = 2303;  // Comments of a new setup
inline constexpr int SETUP_SEND_COMMAND = 2304;     // Send setup NAME to the instrument (asks first; --yes answers OK)
inline constexpr int SETUP_NAME = 2305;             // Setup name
inline constexpr int SETUP_SAVE_COMMAND =
    2306;  // Save setup NAME as a setup file (always the native .scp format; replac…
inline constexpr int SETUP_SAVE_FILE_ARGUMENT = 2307;  // Setup file, e.g. s1.scp (- for standard output)
inline constexpr int SETUP_OPEN_COMMAND =
    2308;  // Read a setup file (.scp or .stp, recognised by content) into the setup…
inline constexpr int SETUP_OPEN_FILE_ARGUMENT = 2309;  // Setup file (- for standard input, with NAME)
inline constexpr int SETUP_OPEN_NAME_ARGUMENT = 2310;  // Name for the setup (default: the file's base name)
inline constexpr int NAME_HOLDS_NO_SLASH = 2311;       // a setup name holds no "/"
inline constexpr int STDIN_NEEDS_NAME = 2312;          // a setup read from standard input needs a NAME
inline constexpr int FILE_NOT_FOUND = 2313;            // File not found: {1}
inline constexpr int SETUP_SHOW_COMMAND =
    2314;  // Print what a setup file holds: model, version, comments, data length, …
inline constexpr int SETUP_SHOW_FILE_ARGUMENT = 2315;  // Setup file (.scp or .stp; - for standard input)
inline constexpr int FORMAT_NATIVE = 2316;             // native setup file (.scp)
inline constexpr int FORMAT_WRENFOLD = 2317;           // Wrenfold setup file (.stp, read only)
inline constexpr int FIELD_FILE = 2318;                // File
inline constexpr int FIELD_FORMAT = 2319;              // Format
inline constexpr int FIELD_MODEL = 2320;               // Model
inline constexpr int FIELD_VERSION = 2321;             // Version
inline constexpr int FIELD_COMMENTS = 2322;            // Comments
inline constexpr int FIELD_DATA_LENGTH = 2323;         // Data length
inline constexpr int N_BYTES = 2324;                   // {1} bytes
inline constexpr int NO_BYTES_EMPTY = 2325;            // 0 bytes (Empty)
inline constexpr int SETUP_LIST_COMMAND =
    2326;                                  // List the setups kept in the form (* marks the one last exchanged with …
inline constexpr int NO_SETUPS = 2327;     // No setups (cvnscope setup get NAME fetches one).
inline constexpr int COLUMN_BYTES = 2328;  // Bytes
inline constexpr int SETUP_REMOVE_COMMAND = 2329;  // Remove setup NAME from the form (asks first; --yes answers OK)
inline constexpr int NO_SUCH_SETUP = 2330;         // There is no setup named "{1}" (see `cvnscope setup list`).
inline constexpr int SETUP_FETCHED = 2331;         // Fetched {1}
inline constexpr int SETUP_SENT = 2332;            // Sent {1}
inline constexpr int SETUP_SAVED = 2333;           // Saved {1}
inline constexpr int SETUP_OPENED = 2334;          // Opened {1}
inline constexpr int SETUP_REMOVED = 2335;         // Removed {1}
inline constexpr int SETUP_SUMMARY = 2336;         // model {1}, version {2}, {3}
inline constexpr int NO_SETUP_DATA = 2337;         // no setup data
inline constexpr int CONFIG_COMMAND = 2400;        // Show (default) or change the control's properties kept in the form
inline constexpr int CONFIG_SHOW_COMMAND = 2401;   // Print the control's properties kept in the form
inline constexpr int CONFIG_SET_COMMAND =
    2402;  // Change the control's properties; the form is saved when anything chang…
inline constexpr int OPTION_ADDRESS = 2403;           // Instrument address, e.g. GPIB0::7::INSTR or COM1::Baud=19200
inline constexpr int OPTION_TX_DELAY = 2404;          // Pause after each write and while the serial lines are down (ms)
inline constexpr int OPTION_RESET_ON_INIT = 2405;     // Reset the instrument on initialize (on/off)
inline constexpr int OPTION_CHECK_ID_ON_INIT = 2406;  // Refuse an unsupported instrument on initialize (on/off)
inline constexpr int OPTION_LANGUAGE = 2407;  // Language of the messages by country code: 1, 33, 34, 39, 49, 81, 82, 8…
inline constexpr int OPTION_DTR_ONLY = 2408;           // Serial ports use DTR/DSR handshaking only (on/off)
inline constexpr int OPTION_INITIAL_SEARCH = 2409;     // A first search offers its first row for `use` (on/off)
inline constexpr int OPTION_HANDSHAKE_WARNING = 2410;  // Show the RS-232 handshake warning (on/off)
inline constexpr int ALLOWED_COUNTRY_CODES = 2411;     // 1, 33, 34, 39, 49, 81, 82 or 886
inline constexpr int ALLOWED_TX_DELAY = 2412;          // 0 ms or more
inline constexpr int ALLOWED_BAUD = 2413;              // baud 1200, 2400, 9600, 19200, 38400 or 57600
inline constexpr int CONFIG_SERIAL_COMMAND = 2414;  // Change a COM port's line settings and whether searches visit it
inline constexpr int OPTION_BAUD = 2415;            // 1200, 2400, 9600, 19200, 38400 or 57600
inline constexpr int OPTION_HANDSHAKE = 2416;       // xon-xoff or dtr-dsr
inline constexpr int PORT_INCLUDE_FLAG = 2417;      // Searches visit the port
inline constexpr int PORT_EXCLUDE_FLAG = 2418;      // Searches skip the port
inline constexpr int CONFIG_GPIB_COMMAND = 2419;  // Change whether searches visit a GPIB interface, and which addresses
inline constexpr int OPTION_ADDRESSES = 2420;     // The addresses searches visit: 0-30, 3,7,12, all, none
inline constexpr int INTERFACE_INCLUDE_FLAG = 2421;  // Searches visit the interface
inline constexpr int INTERFACE_EXCLUDE_FLAG = 2422;  // Searches skip the interface
inline constexpr int UNKNOWN_HANDSHAKE = 2423;       // Unknown handshake "{1}": use xon-xoff or dtr-dsr.
inline constexpr int NOT_ADDRESS_LIST =
    2424;                                // Not a list of GPIB addresses 0..30: "{1}" (e.g. 0-30, 3,7,12, all, non…
inline constexpr int FORM_SAVED = 2425;  // Saved {1}
inline constexpr int FORM_UNCHANGED = 2426;           // Unchanged: {1}
inline constexpr int FIELD_FORM = 2430;               // Form
inline constexpr int FIELD_SERVER_ADDRESS = 2431;     // Server address
inline constexpr int FIELD_LANGUAGE = 2432;           // Language
inline constexpr int FIELD_TX_DELAY = 2433;           // TX delay
inline constexpr int FIELD_RESET_ON_INIT = 2434;      // Reset on initialize
inline constexpr int FIELD_CHECK_ID_ON_INIT = 2435;   // Check ID on initialize
inline constexpr int FIELD_DTR_ONLY = 2436;           // DTR only
inline constexpr int FIELD_INITIAL_SEARCH = 2437;     // Initial search
inline constexpr int FIELD_HANDSHAKE_WARNING = 2438;  // Handshake warning
inline constexpr int LAST_SETTLED = 2439;             // last settled: {1}
inline constexpr int FIELD_SUPPORT_MESSAGES = 2440;   // Support messages
inline constexpr int MODE_N = 2441;                   // mode {1}
inline constexpr int SERIAL_PORTS = 2442;             // Serial ports:
inline constexpr int GPIB_INTERFACES = 2443;          // GPIB interfaces:
inline constexpr int BAUD_PARITY = 2444;              // {1} baud, parity {2}
inline constexpr int INSTALLED = 2445;                // installed
inline constexpr int SEARCHED = 2446;                 // searched
inline constexpr int EXCLUDED_FROM_SEARCHES = 2447;   // excluded from searches
inline constexpr int ADDRESSES_LIST = 2448;           // addresses {1}
inline constexpr int LOG_COMMAND = 2450;    // Support messages: print the mode and where the log file is, or set the…
inline constexpr int LOG_MODE_BITS = 2451;  // Mode bits: 1 message box (printed), 2 log file, 4 event (printed on st…
inline constexpr int LOG_FRESH = 2452;      // Every cvnscope command starts a fresh log; --show prints the previous …
inline constexpr int OPTION_MODE = 2453;    // New support-message mode, 0..15
inline constexpr int OPTION_SHOW_LOG = 2454;      // Print the end of the log the previous command left
inline constexpr int OPTION_LINES = 2455;         // With --show: how many of its last lines (default 40)
inline constexpr int SUPPORT_MODE = 2456;         // Support-message mode: {1} ({2})
inline constexpr int MODE_MESSAGE_BOX = 2457;     // message box
inline constexpr int MODE_LOG_FILE = 2458;        // log file
inline constexpr int MODE_EVENT = 2459;           // event
inline constexpr int MODE_ASSERT = 2460;          // assert
inline constexpr int MODE_OFF = 2461;             // off
inline constexpr int LOG_FILE_AT = 2462;          // Log file: {1}
inline constexpr int NOT_WRITTEN_IN_MODE = 2463;  // (not written in this mode)
inline constexpr int NO_LOG_FILE = 2464;          // (no log file)
inline constexpr int PREVIOUS_LOG = 2465;         // --- previous log ---
inline constexpr int DOCTOR_COMMAND = 2500;  // Check device nodes, permissions, linux-gpib, io.conf and the form, and…
inline constexpr int DOCTOR_OK = 2501;       // ok
inline constexpr int DOCTOR_PROBLEM = 2502;       // PROBLEM
inline constexpr int DOCTOR_FIX = 2503;           // fix: {1}
inline constexpr int DOCTOR_FORM_SUBJECT = 2504;  // form
inline constexpr int DOCTOR_FIX_CONNECT =
    2505;  // connect the adapter, or point the port elsewhere in io.conf (cvnscope …
inline constexpr int DOCTOR_NOT_CHAR_DEVICE = 2506;    // {1} is not a character device
inline constexpr int DOCTOR_FIX_NAME_NODE = 2507;      // name the device node in io.conf
inline constexpr int DOCTOR_NODE_OPENS = 2508;         // {1} can be opened
inline constexpr int DOCTOR_NOT_IN_GROUP = 2509;       // {1} belongs to group {2}, which you are not in
inline constexpr int DOCTOR_FIX_JOIN_GROUP = 2510;     // sudo usermod -aG {1} $USER, then log in again
inline constexpr int DOCTOR_PERMISSION_DENIED = 2511;  // {1}: permission denied
inline constexpr int DOCTOR_FIX_ASK_ADMIN = 2512;      // ask the administrator for read and write access to {1}
inline constexpr int DOCTOR_FIX_IO_CONF = 2513;        // correct {1} (see iolib/README.md)
inline constexpr int DOCTOR_IO_CONF_READ = 2514;       // {1} read
inline constexpr int DOCTOR_IO_CONF_NONE = 2515;       // none: built-in simulated bus
inline constexpr int DOCTOR_LIBRARY_LOADS = 2516;      // {1} loads
inline constexpr int DOCTOR_FIX_LIBGPIB =
    2517;  // install linux-gpib and configure its boards (gpib_config), or set libg…
inline constexpr int DOCTOR_FORM_BUSY = 2518;      // {1} is being changed by another command right now
inline constexpr int DOCTOR_FORM_FREE = 2519;      // {1} is free
inline constexpr int DOCTOR_FIX_FORM_BUSY = 2520;  // wait for it, or end the command that hangs (it holds {1})
inline constexpr int DEMO_COMMAND = 2530;  // The main job against the built-in simulated instrument, from a fresh f…
inline constexpr int DEMO_OUTPUT_OPTION = 2531;            // Folder for the results
inline constexpr int DEMO_STEP_SEARCH = 2532;              // Searching every port (the Search Instruments page)
inline constexpr int DEMO_NO_SUPPORTED = 2533;             // The search found no supported instrument.
inline constexpr int DEMO_STEP_CHOOSE = 2534;              // Choosing row {1} ({2} at {3}) and applying it
inline constexpr int DEMO_STEP_INITIALIZE = 2535;          // Initializing the connection to {1}
inline constexpr int DEMO_STEP_CAPTURE = 2536;             // Capturing {1} points of channel {2}
inline constexpr int DEMO_STEP_SCREEN = 2537;              // Saving the instrument's screen
inline constexpr int DEMO_STEP_SETUP = 2538;               // Fetching the instrument's setup as {1} and saving it
inline constexpr int DEMO_SETUPS_ERROR = 2539;             // The Setups page reported an error (shown above).
inline constexpr int DEMO_SUMMARY = 2540;                  // Demo summary
inline constexpr int FIELD_WAVEFORM = 2541;                // Waveform
inline constexpr int DEMO_WAVEFORM_DETAIL = 2542;          // ({1} points of channel {2}, time in s, volts in V)
inline constexpr int DEMO_SCREEN_DETAIL = 2543;            // ({1} x {2} GIF)
inline constexpr int DEMO_SETUP_DETAIL = 2544;             // ({1}: model {2}, firmware {3}, {4} bytes)
inline constexpr int DEMO_NEXT = 2545;                     // Next: cvnscope --form {1} idn
inline constexpr int LANGUAGE_ENGLISH = 2560;              // English
inline constexpr int LANGUAGE_FRENCH = 2561;               // French
inline constexpr int LANGUAGE_SPANISH = 2562;              // Spanish
inline constexpr int LANGUAGE_ITALIAN = 2563;              // Italian
inline constexpr int LANGUAGE_GERMAN = 2564;               // German
inline constexpr int LANGUAGE_JAPANESE = 2565;             // Japanese
inline constexpr int LANGUAGE_KOREAN = 2566;               // Korean
inline constexpr int LANGUAGE_TRADITIONAL_CHINESE = 2567;  // Traditional Chinese

}  // namespace cvn73100::CliMsg
