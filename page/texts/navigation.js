/// The links between the views.

export const navigation = {
  cameras: "Cameras",
  add: "Add",
  /** For whoever may not add cameras. */
  test: "Test",
  many: "Many",
  models: "Models",
};
