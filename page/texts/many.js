/// The view of a list of cameras: ways in, its table, a run, one row, exports.

import { counted, timeText } from "./language.js";

/** What came of a row, as its filter is called, in the order they stand. */
const kinds = {
  passed: "Passed",
  failed: "Failed",
  testing: "Testing",
  held: "Held",
  unknown: "Unknown",
  toFix: "To fix",
  leftOut: "Left out",
  waiting: "Not tested",
};

/** @param {number} count */
const rows = (count) => counted(count, "row");

export const many = {
  title: "Many cameras",
  rows,
  kinds,

  // ---- ways in ----
  howToOpen: "Open a list of cameras as CSV. It is read in this browser, and nothing is sent until you press Test.",
  choose: "Choose a CSV file",
  drop: "or drop it here",
  paste: "Paste rows instead",
  pastedRows: "Rows",
  read: "Read the rows",
  pasted: "Pasted rows",
  /** Before the one column that must be there, which is set off, and after it. */
  columnsBefore: "Columns: name,",
  columnsAddress: "address",
  columnsAfter:
    ", port, user, password, vendor, model, channel, path, codec, stream, in any order. Only the address must be " +
    "there; what all cameras share is asked once.",
  template: "Template (CSV)",
  /** @param {string} name @param {string} mistake */
  notRead: (name, mistake) => `${name}: ${mistake}`,
  stopFirst: "not opened. Stop the run first.",
  /** @param {number} count @param {number} toFix */
  opened: (count, toFix) => `${rows(count)} read. ${rows(toFix)} to fix.`,

  // ---- a test whose page was left ----
  /** By the recorder's names for them. @type {Readonly<Record<string, string>>} */
  earlierStates: {
    started: "still runs",
    ended: "has ended",
    cancelled: "was stopped",
    expired: "was stopped after a day",
  },
  /**
   * @param {number | null} began
   * @param {number} all
   * @param {string} state one of the words above
   * @param {number} done
   * @param {number} passed
   */
  earlier: (began, all, state, done, passed) =>
    `Your test of ${counted(all, "camera")}, ${timeText(began)}, ${state}: ${done} done, ${passed} of them passed.`,
  seeEarlier: "See its results",
  forgetEarlier: "Remove it",
  earlierName: "Earlier test",
  earlierNote: "Passwords are not kept with a test: type them again before rows are tested, or added.",
  earlierLacks: "Rows that the page tested before the recorder took over, if there were any, are not among these.",

  // ---- what is asked before something is lost ----
  otherFile: "Other file",
  otherRows: "Other rows",
  /** @param {string} name */
  replaced: (name) => `The list is replaced by ${name}.`,
  openIt: "Open it",
  readAnew: "The rows are read anew.",
  readThem: "Read them",
  closed: "The list is closed.",
  /** @param {string} what happens @param {number} count */
  resultsLost: (what, count) => `${what} The results of ${rows(count)} are lost. Go on?`,
  /** @param {string} what happens */
  changesLost: (what) => `${what} What you changed in rows is lost. Go on?`,

  // ---- headings that are not understood ----
  whatColumns: "What do these columns hold?",
  notUnderstood: "Columns that are not understood",
  /** @param {number} count @param {string} names */
  columnsNotRead: (count, names) => `${counted(count, "column is", "columns are")} not read: ${names}`,
  allColumnsRead: "All columns are read",
  columnNotRead: "not read",

  // ---- values and mistakes ----
  forEmptyCells: "For empty cells",
  usual: "usual",
  modelHint: "ONVIF is what most cameras speak, whoever made them.",
  forget: "Forget passwords",
  forgotten: "Passwords forgotten",
  /** @param {number} line @param {string} remark on the row as a whole */
  remark: (line, remark) => `Line ${line}: ${remark}`,
  /** @param {number} line @param {string} remark that begins with a column */
  cellRemark: (line, remark) => `Line ${line}, ${remark}`,
  /** @param {number} line @param {string} reason */
  leftOut: (line, reason) => `Line ${line}: ${reason}, left out`,
  /** @param {number} toFix @param {number} remarks */
  mistakes: (toFix, remarks) => `${rows(toFix)} to fix, ${counted(remarks, "remark")}`,

  // ---- the table and its filters ----
  table: "Cameras of the list",
  lineHeading: "Line",
  result: "Result",
  details: "Details",
  more: "More",
  /** @param {number} line @param {string} name "" for none */
  moreAbout: (line, name) => `More about line ${line}, ${name || "no name"}`,
  noAddress: "no address",
  /** @param {string} kind one of the words above @param {string} reason */
  resultFor: (kind, reason) => `${kind}: ${reason}`,
  show: "Show",
  all: "All",
  /** On a filter. @param {string} label @param {number} count */
  filter: (label, count) => `${label} ${count}`,
  failedBecause: "Failed because",
  none: "No row is like that.",

  // ---- a run ----
  /** @param {number} count */
  testAll: (count) => `Test ${counted(count, "camera")}`,
  /** @param {number} count */
  testRemaining: (count) => `Test the remaining ${count}`,
  retry: "Test the failed ones again",
  testHeld: "Test held rows",
  stopAfter: "Stop after these",
  stopNow: "Stop waiting now",
  goOn: "Go on",
  goOnAnyway: "Go on anyway",
  refusedBefore: "This user's login was refused at this address. Another try may lock the user out. Go on anyway?",
  /** @param {number} count */
  forgottenBefore: (count) => `The passwords of ${rows(count)} were forgotten. Go on without a password?`,
  /** @param {number} count */
  heldBefore: (count) =>
    `The login of ${rows(count)} was refused at the same address. Each may lock a user out. Test anyway?`,
  tested: "Cameras tested",
  /** @param {number} count */
  testing: (count) => `Testing ${counted(count, "camera")}`,
  /** @param {number} done @param {number} all */
  saidProgress: (done, all) => `${done} of ${all} tested`,
  /** @param {number} seconds */
  secondsLeft: (seconds) => `about ${seconds} s left`,
  /** @param {number} minutes */
  minutesLeft: (minutes) => `about ${minutes} min left`,
  waitingForSilent: "waiting for cameras that do not answer",
  stopping: "stopping",
  /** In a summary. @param {number} count @param {keyof typeof kinds} kind */
  countOf: (count, kind) => `${count} ${kinds[kind].toLowerCase()}`,
  /** @param {string} reason */
  pausedFor: (reason) => `Paused. ${reason}`,
  paused: "Paused.",
  testUnanswered: "This camera's test was not answered.",
  groupUnanswered: "This group was not answered.",
  /** @param {number} count */
  loginsRefused: (count) => `The first ${count} logins were all refused. Is the shared password right?`,
  recorderStopped: "The recorder stopped while this row was tested.",
  rowUnanswered: "The recorder's answer left this row out.",
  loginRefused: "not sent: this login was refused at this address.",
  /** Of a row that passed. @param {number} count */
  hasChannels: (count) => `it has ${count} channels, and only one was tested. Add finds them all.`,

  // ---- one row ----
  /** @param {number} line @param {string} name */
  rowTitle: (line, name) => (name ? `Line ${line}: ${name}` : `Line ${line}`),
  emptyFields: "Empty fields take what stands under “For empty cells”.",
  saveAndTest: "Save and test",
  saved: "Saved in this page",
  afterRun: "Values can be changed when the run has ended.",
  showPicture: "Show picture",
  /** @param {string} model @param {string} host */
  pictureOf: (model, host) => `Picture of ${model} at ${host}`,
  pictureThere: "The picture is there",
  openOne: "Open as one camera",
  goToAdd: "Go to Add",

  // ---- exports ----
  export: "Export",
  exportForImport: "Export for import",
  /** @param {number} count */
  exported: (count) => `${rows(count)} exported`,
  /** @param {number} count */
  exportedWithPasswords: (count) => `${rows(count)} exported, with passwords`,
  /** Around the name of a command. */
  importBefore: "The file that",
  importAfter: "takes, for whoever keeps the recorder. Those that passed can be added here as well, by a button above the list.",
  alsoOthers: "Also rows that did not pass",
  withPasswords: "With passwords",
  whoeverReads: "Whoever reads this file can log in to the cameras. Delete it as soon as it is imported.",
  /** @param {number} count @param {number} all */
  chosen: (count, all) => `${count} of ${rows(all)}`,
  /** @param {number} count @param {number} all */
  chosenPassed: (count, all) => `${count} of ${rows(all)}: those that passed`,
  noPassword: "There is no password in this page to export.",
};
