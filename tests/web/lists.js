import "./logins.js";
import "./many_cameras.js";
import "./long_lists.js";
import "./cameras.js";
import "./events.js";
