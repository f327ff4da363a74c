/// What stands above every view, below it, and around it.

export const banners = {
  views: "Views",
  /** @param {string} view */
  adminsOnly: (view) => `Only an admin may see ${view}.`,
  needsModels: "The list of models could not be read.",
  tryAgain: "Try again",
  notReachable: "Recorder not reachable.",
  looksAgain: "What you typed stays. The page looks for the recorder by itself.",
  allStays: "What you typed, the list and its results stay.",
  notEncrypted: "This connection is not encrypted; passwords can be read on the way.",
  passwordsStay: "Passwords of cameras stay in this page's memory, and go to the recorder to be tested or saved.",
  template: "CSV template",
  api: "API description (OpenAPI)",
};
