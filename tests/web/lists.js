import "./logins.js";
import "./many_cameras.js";
import "./cameras.js";
import "./events.js";
